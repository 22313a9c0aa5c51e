#include "segy/segy_disk_output.h"

#include <filesystem>

#include "foundation/system_paths.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_paths.h"
#include "segy/segy_reader.h"

namespace halvern {

SegyDiskOutput::SegyDiskOutput(const FlowSection& section, LogFlag log)
    : DiskOutputFlowItem(FlowItemKind::kSegyDiskOutput, log) {
    Configure(section);
}

SegyDiskOutput::~SegyDiskOutput() {
    // A run that is given up before its end: what was accepted still has to reach the system.
    if (const Fault fault = writer_.finish()) {
        Error("Cannot finish writing to file: %s\n", path_.c_str());
        Error("%s.\n", fault.reason().c_str());
    }
}

ParameterList SegyDiskOutput::Parameters() {
    return DiskParameters(default_segy_path(), "SEG-Y Disk File to write.",
                          "Choose a disk SEG-Y file to write to.  If the file exists, it will be "
                          "overwritten.  If it does not exist, it will be created.");
}

DialogTexts SegyDiskOutput::WindowTexts() const {
    DialogTexts texts = DiskOutputFlowItem::WindowTexts();
    texts.help_title = "SEGY Disk Output Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyDiskOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                int) {
    Target target{.path = file(), .format = ChosenFormat()};
    SegyLayout input;
    if (!CheckParameters(line) || (OverwritesInput() && !FindInput(target, input))) {
        return TerminateJob(kJobError);
    }
    const int samples = OutputSamples(line);
    if (!CheckPath(target.path) ||
        (OverwritesInput() && !CheckFits(input.interval, input.samples, line, samples)) ||
        (write_type() == kAppend && !FindEndOfFile(line, samples, target))) {
        return TerminateJob(kJobError);
    }
    path_ = target.path;
    encoder_ = RecordEncoder(*this, header, target.format, samples, line.sample_interval(),
                             OverwritesInput() ? 0 : target.traces);
    line_header_due_ = !OverwritesInput() && target.traces == 0;
    traces_to_overwrite_ = OverwritesInput() ? target.traces : 0;
    if (writer_.open(path_, target.mode, target.offset)) {
        return FailWriting("Cannot open file to write");
    }
    prepared_ = true;
}

bool SegyDiskOutput::FindInput(Target& target, SegyLayout& layout) {
    if (!FindInputPath("SEGY DISK OUTPUT", target.path)) return false;
    target.mode = BlockWriter::Mode::kUpdate;
    std::int64_t left_over = 0;
    if (!ReadLayout(target.path, layout, target.traces, left_over)) {
        Error("Cannot open file to write: %s\n", target.path.c_str());
        return false;
    }
    target.format = layout.format;
    target.offset = layout.first_record();
    return true;
}

bool SegyDiskOutput::FindEndOfFile(const LineHeader& line, int samples, Target& target) {
    std::error_code unknown;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(target.path, unknown));
    if (unknown) {  // new, most of all
        target.mode = BlockWriter::Mode::kCreate;
        return true;
    }
    if (size <= kLineHeaderBytes) {
        if (size > 0 && size < kLineHeaderBytes) {
            Warning("The output file is shorter than a SEG-Y header; it is written anew.\n");
        }
        // The first trace brings headers that cover all of it; until then it stays as it is.
        target.mode = BlockWriter::Mode::kUpdate;
        return true;
    }
    SegyLayout layout;
    std::int64_t left_over = 0;
    if (!ReadLayout(target.path, layout, target.traces, left_over)) {
        Error("Cannot append to output file '%s'.\n", target.path.c_str());
        return false;
    }
    if (!CheckAppends(target.path, layout.interval, layout.samples, line, samples)) return false;
    if (left_over != 0) {
        // Traces behind part of a record could never be read again.
        Error("Cannot append to output file '%s'.\n", target.path.c_str());
        Error("It ends in an incomplete trace of %lld bytes.\n", static_cast<long long>(left_over));
        return false;
    }
    target.format = layout.format;
    // A file with headers alone starts anew: the new headers take the place of the old.
    if (target.traces > 0) {
        target.mode = BlockWriter::Mode::kUpdate;
        target.offset = size;
    }
    return true;
}

bool SegyDiskOutput::ReadLayout(const std::string& path, SegyLayout& layout, std::int64_t& traces,
                                std::int64_t& left_over) {
    const char* header_path = GetInputHeaderName();
    SegyReader reader;
    const SegyOpening opening = reader.open(
        path, {.header_path = header_path ? header_path : DefaultHeaderPath(), .report = this});
    if (opening == SegyOpening::kNoDefinition) {
        Error("Cannot read trace header format '%s'.\n", path.c_str());
    }
    layout = reader.layout();
    traces = reader.trace_count();
    left_over = reader.left_over();
    return opening == SegyOpening::kOpened;
}

int SegyDiskOutput::ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                                 TraceSamples& samples) {
    if (line_header_due_) {
        line_header_due_ = false;
        if (writer_.write(
                segy_output_line(line, encoder_.format(), encoder_.samples(), encoder_.interval())
                    .bytes()) < kLineHeaderBytes) {
            FailWriting("Cannot 'SEG Y Line Header' write to file");
            return kKeepBack;
        }
    }
    if (!CheckRecordWasRead(encoder_)) return kKeepBack;
    const std::span<const std::byte> record = encoder_.encode(header, samples);
    const std::size_t written = writer_.write(record);
    if (written < record.size()) {
        FailWriting(written < std::size_t{kTraceHeaderBytes}
                        ? "Cannot write 'SEG Y Trace Header' to file"
                        : "Cannot write 'SEG Y Trace Data' to file");
        return kKeepBack;
    }
    return kPassOn;
}

void SegyDiskOutput::EndRun() {
    if (prepared_ && writer_.finish()) return FailWriting("Cannot finish writing to file");
    LogWritten(encoder_, prepared_ ? path_ : file());
    const auto traces = static_cast<long long>(encoder_.encoded());
    if (prepared_ && traces < traces_to_overwrite_) {
        Warning(
            "Only the first %lld of the %lld records in the input file were written over; the "
            "others are as they were.\n",
            traces, static_cast<long long>(traces_to_overwrite_));
    }
    encoder_ = {};
    prepared_ = false;
}

void SegyDiskOutput::FailWriting(const char* what) {
    Error("%s: %s\n", what, path_.c_str());
    Error("%s.\n", writer_.fault().reason().c_str());
    TerminateJob(kJobError);
}

}  // namespace halvern
