#include "geometry/ascii_input.h"

#include <utility>

#include "geometry/ascii_traces.h"

namespace halvern {

std::unique_ptr<FlowItem> make_ascii_input(const FlowSection& section, LogFlag log) {
    AsciiColumns columns;
    const ParameterList list = columns.parameters();
    set_defaults(list);
    for (const std::string& line : section.lines) read_line(list, line.c_str());
    if (columns.method == AsciiColumns::kCreate) return std::make_unique<AsciiTraces>(section, log);
    return std::make_unique<AsciiInput>(section, log);
}

AsciiInput::AsciiInput(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kAsciiInput, log) {
    Configure(section);
}

void AsciiInput::PutEqualsFirst() {
    // Swaps, not a stable partition: where several fields are no "=", their order may change.
    std::vector<AsciiField>& match = columns_.match;
    for (std::size_t i = 0; i < match.size(); ++i) {
        for (std::size_t j = i + 1; j < match.size(); ++j) {
            if (match[i].compare != kEqual && match[j].compare == kEqual) {
                std::swap(match[i], match[j]);
            }
        }
    }
}

bool AsciiInput::LoadRecords() {
    Message("Scanning the ASCII Input file.\n");
    table_ = AsciiTable(columns_.match, columns_.data);
    if (table_.read(*lines_) != 0) {
        Error("Cannot read file: '%s'\n", columns_.file.c_str());
        return false;
    }
    if (table_.records() == 0) {
        Error("No records in file: '%s'\n", columns_.file.c_str());
        return false;
    }
    table_.sort();
    values_.resize(columns_.match.size());
    return true;
}

void AsciiInput::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    bool ready = columns_.find_words(*this, header) && columns_.check(*this);
    if (ready) {
        PutEqualsFirst();
        lines_ = columns_.open(*this);
        ready = lines_ && (columns_.method != AsciiColumns::kUpdate || LoadRecords());
    }
    scaled_ = columns_.has_coordinates();
    scalar_.prepare(header);
    if (!ready) TerminateJob(kJobError);
}

void AsciiInput::OverwriteTrace(TraceHeaderDefinition& header) {
    std::string_view line;
    while (lines_ && lines_->next(line)) {
        if (columns_.take_line(line, *lines_, header)) return;
    }
    if (lines_ && lines_->fault()) {
        Error("Cannot read file: '%s'\n", columns_.file.c_str());
        TerminateJob(kJobError);
    }
}

void AsciiInput::UpdateTrace(TraceHeaderDefinition& header) {
    for (std::size_t i = 0; i < values_.size(); ++i) {
        const AsciiField& field = columns_.match[i];
        values_[i] = field.floating ? AsciiValue(header.get_double(field.word), true)
                                    : AsciiValue(header.get_int(field.word), false);
    }
    const int record = table_.find(values_);
    if (record < 0) return;
    for (std::size_t i = 0; i < columns_.data.size(); ++i) {
        const AsciiField& field = columns_.data[i];
        header.set_double(field.word, table_.data_value(record, i).number(field.floating));
    }
    ++matched_;
}

int AsciiInput::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    if (columns_.method == AsciiColumns::kUpdate) {
        UpdateTrace(header);
    } else {
        OverwriteTrace(header);
    }
    if (scaled_) scalar_.look(*this, header);
    return kPassOn;
}

void AsciiInput::RunInput() {
    Error("Only CREATE can be used as the first item in a flow.\n");
    // The other method is left unnamed on purpose: it is the default, which nobody chose.
    if (columns_.method == AsciiColumns::kOverwrite) Error("%s", AsciiColumns::kOverwriteLine);
    TerminateJob(kJobError);
}

}  // namespace halvern
