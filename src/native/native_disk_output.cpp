#include "native/native_disk_output.h"

#include <filesystem>

#include "native/native_reader.h"

namespace halvern {

NativeDiskOutput::NativeDiskOutput(const FlowSection& section, LogFlag log)
    : DiskOutputFlowItem(FlowItemKind::kNativeDiskOutput, log) {
    Configure(section);
}

ParameterList NativeDiskOutput::Parameters() {
    return DiskParameters("NONE", "Name the output data set.",
                          "Choose a name for the data set in any directory.  If it exists, it "
                          "will be overwritten.  If it does not exist, it will be created.");
}

DialogTexts NativeDiskOutput::WindowTexts() const {
    return {.title = "Halvern Disk Output Parameters",
            .help_title = "Halvern Disk Output Help",
            .help_page = "Halvern Parameters",
            .already_up = "Halvern Disk Output Interface is already up."};
}

void NativeDiskOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                  int) {
    path_ = file();
    if (!CheckParameters(line) ||
        (OverwritesInput() && !FindInputPath("HALVERN DATA DISK OUTPUT", path_)) ||
        !CheckPath(path_)) {
        return TerminateJob(kJobError);
    }
    NativeLayout layout{.samples = OutputSamples(line),
                        .interval = line.sample_interval(),
                        .format = ChosenFormat()};
    std::error_code unknown;
    const bool existing = write_type() != kOverwrite && std::filesystem::exists(path_, unknown);
    std::int64_t traces_before = 0;
    if (existing && NativeMain::read(path_)) {
        NativeReader reader;
        if (reader.open(path_, 0, *this) != NativeOpening::kOpened) {
            Error("Cannot open output file '%s'.  Check disk space and permissions.\n",
                  path_.c_str());
            return TerminateJob(kJobError);
        }
        const NativeLayout& found = reader.layout();
        const bool fits =
            OverwritesInput()
                ? CheckFits(found.interval, found.samples, line, layout.samples)
                : CheckAppends(path_, found.interval, found.samples, line, layout.samples);
        if (!fits) return TerminateJob(kJobError);
        layout.format = found.format;
    }
    const auto mode = static_cast<NativeWriter::Mode>(write_type());
    if (writer_.open(path_, mode, layout, header, places_ ? *places_ : NativePlaces::configured(),
                     *this) != 1) {
        Error("Cannot open output file '%s'.  Check disk space and permissions.\n", path_.c_str());
        return TerminateJob(kJobError);
    }
    if (write_type() == kAppend) traces_before = writer_.traces_before();
    encoder_ =
        RecordEncoder(*this, header, layout.format, layout.samples, layout.interval, traces_before);
    prepared_ = true;
}

int NativeDiskOutput::ProcessTrace(LineHeader&, TraceHeaderDefinition& header,
                                   TraceSamples& samples) {
    if (!CheckRecordWasRead(encoder_)) return kKeepBack;
    const std::span<const std::byte> record = encoder_.encode(header, samples);
    if (writer_.write_trace(record.first(kTraceHeaderBytes), record.subspan(kTraceHeaderBytes)) !=
        0) {
        Error("Cannot write to file: %s\n", path_.c_str());
        TerminateJob(kJobError);
        return kKeepBack;
    }
    return kPassOn;
}

void NativeDiskOutput::EndRun() {
    if (prepared_ && writer_.finish() != 0) {
        Error("Cannot write to file: %s\n", path_.c_str());
        return TerminateJob(kJobError);
    }
    LogWritten(encoder_, prepared_ ? path_ : file());
    encoder_ = {};
    prepared_ = false;
}

}  // namespace halvern
