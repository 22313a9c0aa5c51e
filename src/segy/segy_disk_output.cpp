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
        Error("Cannot finish writing to file: %s\n", FileWritten().c_str());
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
    std::string path = file();
    bool exists = false;
    if (!CheckParameters(line) || (OverwritesInput() && !FindInputPath("SEGY DISK OUTPUT", path)) ||
        !CheckPath(path) || !LockExisting(exists)) {
        return TerminateJob(kJobError);
    }
    const int samples = OutputSamples(line);
    Target target{.format = ChosenFormat()};
    if ((OverwritesInput() && !FindInput(line, samples, target)) ||
        (write_type() == kAppend && exists && !FindEndOfFile(line, samples, target)) ||
        (!exists && !LockNew())) {
        return TerminateJob(kJobError);
    }
    if (IsRehearsal()) return;
    encoder_ = RecordEncoder(*this, header, target.format, samples, line.sample_interval(),
                             OverwritesInput() ? 0 : target.traces);
    traces_to_overwrite_ = OverwritesInput() ? target.traces : 0;
    // A file of which nothing stays is emptied when the first record is due.
    empties_ = target.offset == 0;
    if (empties_) return;
    if (const Fault fault = writer_.open(path, BlockWriter::Mode::kUpdate, target.offset)) {
        if (!FailToOpen(fault)) TerminateJob(kJobError);
    }
}

bool SegyDiskOutput::FailToOpen(const Fault& fault) const {
    Error("Cannot open file to write: %s\n", FileWritten().c_str());
    if (fault) Error("%s.\n", fault.reason().c_str());
    return false;
}

bool SegyDiskOutput::FindInput(const LineHeader& line, int samples, Target& target) {
    SegyLayout layout;
    std::int64_t left_over = 0;
    if (!ReadLayout(layout, target.traces, left_over)) {
        return FailToOpen({});
    }
    target.format = layout.format;
    target.offset = layout.first_record();
    return CheckFormat(layout) && CheckFits(layout.interval, layout.samples, line, samples);
}

bool SegyDiskOutput::FindEndOfFile(const LineHeader& line, int samples, Target& target) {
    const std::string path = FileWritten();
    std::error_code unknown;
    if (std::filesystem::is_character_file(path, unknown)) return true;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(path, unknown));
    if (unknown) return FailToOpen(Fault::of_system(unknown));
    if (size <= kLineHeaderBytes) {
        if (size > 0 && size < kLineHeaderBytes) {
            Warning("The output file is shorter than a SEG-Y header; it is written anew.\n");
        }
        return true;
    }
    SegyLayout layout;
    std::int64_t left_over = 0;
    if (!ReadLayout(layout, target.traces, left_over)) {
        Error("Cannot append to output file '%s'.\n", path.c_str());
        return false;
    }
    if (!CheckAppends(path, layout.interval, layout.samples, line, samples) ||
        !CheckFormat(layout)) {
        return false;
    }
    if (left_over != 0) {
        Warning(
            "The output file ends in an incomplete trace of %lld bytes, as a job leaves that was "
            "killed or found the disk full.  The new traces take its place.\n",
            static_cast<long long>(left_over));
    }
    target.format = layout.format;
    // A file with headers alone starts anew: the new headers take the place of the old.
    if (target.traces > 0) target.offset = layout.record_offset(target.traces);
    return true;
}

bool SegyDiskOutput::CheckFormat(const SegyLayout& layout) const {
    const int code = layout.format_code;
    if (code == 1 || code == 3 || code == 5) return true;
    Error(
        "The file '%s' has the format code %d.  Traces are written over or after others as 1 (IBM "
        "floating point), 3 (16-bit integer) or 5 (IEEE floating point) only.\n",
        FileWritten().c_str(), code);
    return false;
}

bool SegyDiskOutput::ReadLayout(SegyLayout& layout, std::int64_t& traces, std::int64_t& left_over) {
    const std::string path = FileWritten();
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

bool SegyDiskOutput::Begin(const LineHeader& line) {
    empties_ = false;
    if (const Fault fault = writer_.open(FileWritten(), BlockWriter::Mode::kCreate)) {
        if (!FailToOpen(fault)) TerminateJob(kJobError);
        return false;
    }
    const LineHeader output =
        segy_output_line(line, encoder_.format(), encoder_.samples(), encoder_.interval());
    if (writer_.write(output.bytes()) == kLineHeaderBytes) return true;
    FailWriting("Cannot 'SEG Y Line Header' write to file");
    return false;
}

int SegyDiskOutput::ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                                 TraceSamples& samples) {
    if (!CheckRecordIsItsOwn(encoder_) || (empties_ && !Begin(line))) return kKeepBack;
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
    if (writer_.finish()) return FailWriting("Cannot finish writing to file");
    lock_.release();
    LogWritten(encoder_);
    const auto traces = static_cast<long long>(encoder_.encoded());
    if (traces < traces_to_overwrite_) {
        Warning(
            "Only the first %lld of the %lld records in the input file were written over; the "
            "others are as they were.\n",
            traces, static_cast<long long>(traces_to_overwrite_));
    }
    encoder_ = {};
    empties_ = false;
    traces_to_overwrite_ = 0;
}

void SegyDiskOutput::FailWriting(const char* what) {
    Error("%s: %s\n", what, FileWritten().c_str());
    Error("%s.\n", writer_.fault().reason().c_str());
    TerminateJob(kJobError);
}

}  // namespace halvern
