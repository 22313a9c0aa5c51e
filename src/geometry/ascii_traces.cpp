#include "geometry/ascii_traces.h"

namespace halvern {

namespace {
// A sample buffer of 3,600 bytes.
constexpr int kSamples = 900;
constexpr auto kInterval = SampleInterval::of_ms(4);
}  // namespace

AsciiTraces::AsciiTraces(const FlowSection& section, LogFlag log)
    : InputFlowItem(FlowItemKind::kAsciiInput, log) {
    Configure(section);
}

void AsciiTraces::BlankSamples() {
    samples_.set_raw(record_, kSamples, kSamples, kSamples, SampleFormat::kIeee);
}

void AsciiTraces::OpenSource() {
    if (header_.load(columns_.header_file) != 0) {
        Error("Cannot read trace header format '%s'.\n", columns_.header_file.c_str());
        return TerminateJob(kJobError);
    }
    header_.attach(image_.data());
    line_.build_from_definition(columns_.header_file, kInterval, kSamples, SampleFormat::kIeee);
    record_.resize(kSamples * sizeof(float));
    BlankSamples();
    expected_ = LineReader(columns_.file, AsciiColumns::kLongestLine).count_lines();
    Message("Creating traces of %d samples at %d ms, IEEE floating point.\n", kSamples,
            kInterval.whole_ms());
    if (columns_.find_words(*this, header_) && columns_.check(*this)) {
        lines_ = columns_.open(*this);
    }
    if (!lines_) TerminateJob(kJobError);
}

void AsciiTraces::PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) {
    if (!previous()) return;
    Error("CREATE can only be used as the first item in a flow.\n");
    TerminateJob(kJobError);
}

void AsciiTraces::Rehearse() {
    OpenSource();
    PrepareChain(line_, header_, samples_, GetInputTraceCount());
}

ReadResult AsciiTraces::ReadNext() {
    std::string_view line;
    if (!lines_ || !lines_->next(line)) {
        if (!lines_ || !lines_->fault()) return ReadResult::kEnd;
        Error("Cannot read file: '%s'\n", columns_.file.c_str());
        return ReadResult::kFailed;
    }
    if (!columns_.take_line(line, *lines_, header_)) return ReadResult::kNothing;
    BlankSamples();
    return ReadResult::kTrace;
}

}  // namespace halvern
