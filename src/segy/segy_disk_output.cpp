#include "segy/segy_disk_output.h"

#include <filesystem>

#include "foundation/system_paths.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_paths.h"
#include "segy/segy_reader.h"

namespace halvern {

namespace {

constexpr int kEnteredTime = 1;
constexpr int kTraceLength = 0;

/// The line's sample interval as a file's header holds it.
int whole_us(const LineHeader& line) { return line.sample_interval() / kInternalPerUs; }

int code(SampleFormat format) { return static_cast<int>(format); }

std::string base_name(const std::string& path) { return path.substr(path.find_last_of("/\\") + 1); }

}  // namespace

SegyDiskOutput::SegyDiskOutput(const FlowSection& section, LogFlag log)
    : OutputFlowItem(FlowItemKind::kSegyDiskOutput, log) {
    Configure(section);
}

SegyDiskOutput::~SegyDiskOutput() {
    // A run that is given up before its end: what was accepted still has to reach the system.
    if (writer_.finish() != 0) {
        Error("Cannot finish writing to file: %s\n", path_.c_str());
        Error("%s.\n", writer_.reason().c_str());
    }
}

ParameterList SegyDiskOutput::Parameters() {
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, default_segy_path()},
         .field = {.label = "FileName",
                   .prompt = "SEG-Y Disk File to write.",
                   .help = "Choose a disk SEG-Y file to write to.  If the file exists, it will be "
                           "overwritten.  If it does not exist, it will be created.",
                   .kind = FieldKind::kOutputFile}},
        {.key = "OUTPUTFORMAT",
         .format = "%d",
         .value = Bound{&output_format_, code(SampleFormat::kInt16)},
         .field = {.label = "Format",
                   .prompt = "Format for output trace data?",
                   .choices = {{"16-bit Integer", code(SampleFormat::kInt16)},
                               {"IEEE Floating Point", code(SampleFormat::kIeee)},
                               {"IBM Floating Point", code(SampleFormat::kIbm)}}}},
        {.key = "WRITETYPE",
         .format = "%d",
         .value = Bound{&write_type_, kOverwrite},
         .field = {.label = "Type",
                   .prompt = "Overwrite or Append to file?",
                   .choices = {{"Overwrite Input", kOverwriteInput,
                                "You have selected the OVERWRITE INPUT option.  THIS IS EXTREMELY "
                                "DANGEROUS.  Please ensure that you understand it's use before "
                                "proceeding."},
                               {"Overwrite", kOverwrite},
                               {"Append", kAppend}}}},
        {.key = "USETIME",
         .format = "%d",
         .value = Bound{&use_time_, kTraceLength},
         .field = {.label = "UseTime",
                   .prompt = "Use the current trace length or enter a new one?",
                   .choices = {{"Use Entered Time", kEnteredTime},
                               {"Use Trace Length", kTraceLength}}}},
        {.key = "TIME",
         .format = "%d",
         .value = Bound{&time_ms_, 1000},
         .field = {.label = "Time",
                   .prompt = "Trace length to output (in msec.)?",
                   .help = "Enter the trace length to be output in milliseconds.  The number here "
                           "should be >= 0.  If the number entered is greater than the current "
                           "trace length, the current trace length will be used."}},
    };
}

DialogTexts SegyDiskOutput::WindowTexts() const {
    DialogTexts texts = OutputFlowItem::WindowTexts();
    texts.help_title = "SEGY Disk Output Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyDiskOutput::LogParameters() {
    if (write_type_ == kOverwriteInput) return Message("Overwriting input file.\n");
    if (write_type_ == kOverwrite) Message("Overwriting output file %s\n", file_.c_str());
    if (write_type_ == kAppend) Message("Appending to output file %s\n", file_.c_str());
    switch (ChosenFormat()) {
        case SampleFormat::kInt16:
            Message("Output type = 16-BIT Integer\n");
            break;
        case SampleFormat::kIeee:
            Message("Output type = IEEE Floating Point\n");
            break;
        default:
            Message("Output type = IBM Floating Point\n");
            break;
    }
    if (use_time_ == kEnteredTime) {
        Message("The traces will be shortened to %d msec.\n", time_ms_);
    } else {
        Message("The current trace length will be used.\n");
    }
}

SampleFormat SegyDiskOutput::ChosenFormat() const {
    if (output_format_ == code(SampleFormat::kInt16)) return SampleFormat::kInt16;
    if (output_format_ == code(SampleFormat::kIeee)) return SampleFormat::kIeee;
    return SampleFormat::kIbm;
}

void SegyDiskOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                int) {
    Target target{.path = file_, .format = ChosenFormat()};
    SegyLayout input;
    if (!CheckParameters(line) || (OverwritesInput() && !FindInput(target, input))) {
        return TerminateJob(kJobError);
    }
    const int samples = OutputSamples(line);
    if (!CheckPath(target.path) || (OverwritesInput() && !CheckFits(input, line, samples)) ||
        (write_type_ == kAppend && !FindEndOfFile(line, samples, target))) {
        return TerminateJob(kJobError);
    }
    path_ = target.path;
    encoder_ = SegyRecordEncoder(header, target.format, samples, line.sample_interval(),
                                 OverwritesInput() ? 0 : target.traces);
    line_header_due_ = !OverwritesInput() && target.traces == 0;
    traces_to_overwrite_ = OverwritesInput() ? target.traces : 0;
    if (writer_.open(path_, target.mode, target.offset) != 0) {
        return FailWriting("Cannot open file to write");
    }
    prepared_ = true;
}

bool SegyDiskOutput::CheckParameters(const LineHeader& line) const {
    if (use_time_ == kEnteredTime && time_ms_ < 0) {
        Error("User requested output time must be >= 0.  It was entered as %d.  Fix and re-run.\n",
              time_ms_);
        return false;
    }
    if (write_type_ < kAppend || write_type_ > kOverwriteInput) {
        Error(
            "The write type must be 0 (Append), 1 (Overwrite) or 2 (Overwrite Input).  "
            "You have entered '%d'.\n",
            write_type_);
        return false;
    }
    if (use_time_ == kEnteredTime && line.sample_interval() <= 0) {
        Error("The line has no sample interval, so that no time can be output.\n");
        return false;
    }
    if (line.samples() < 0) {
        Error("The traces have more samples than the 32767 that a SEG-Y file holds.\n");
        return false;
    }
    return true;
}

int SegyDiskOutput::OutputSamples(const LineHeader& line) const {
    if (use_time_ != kEnteredTime) return line.samples();
    // Whole milliseconds divide, as the length was entered in them; finer sampling divides exactly.
    const int interval = line.sample_interval();
    const std::int64_t whole_ms = interval / kInternalPerMs;
    const std::int64_t wanted =
        (whole_ms > 0 ? time_ms_ / whole_ms : std::int64_t{time_ms_} * kInternalPerMs / interval) +
        1;
    if (line.samples() < wanted) {
        Warning(
            "User requested %dms. of time to be output.  This is longer than the actual trace.\n",
            time_ms_);
        Warning("The traces will be output at their current full trace length.\n");
        return line.samples();
    }
    return static_cast<int>(wanted);
}

bool SegyDiskOutput::FindInput(Target& target, SegyLayout& layout) {
    const FlowItem* head = this;
    while (head->previous()) head = head->previous();
    const char* name = GetInputName();
    if (!name || !dynamic_cast<const SegyDiskInput*>(head)) {
        Error(
            "There is no input file to overwrite.  "
            "Change the option in SEGY DISK OUTPUT to OVERWRITE or APPEND.\n");
        return false;
    }
    target.path = name;
    target.mode = SegyWriter::Mode::kUpdate;
    std::int64_t left_over = 0;
    if (!ReadLayout(target.path, layout, target.traces, left_over)) {
        Error("Cannot open file to write: %s\n", target.path.c_str());
        return false;
    }
    target.format = layout.format;
    target.offset = layout.first_record();
    return true;
}

bool SegyDiskOutput::CheckFits(const SegyLayout& input, const LineHeader& line, int samples) const {
    if (input.samples == samples && input.interval_us() == whole_us(line)) return true;
    Error(
        "The traces (%d samples of %.3f ms) do not fit the records of the input file "
        "(%d samples of %.3f ms).  To overwrite it would destroy it.\n",
        samples, line.sample_interval() / double{kInternalPerMs}, input.samples,
        input.interval_ms());
    return false;
}

bool SegyDiskOutput::CheckPath(const std::string& path) {
    if (path == "NONE" || base_name(path) == "NONE") {
        Error("Output file '%s' has not been properly selected\n", path.c_str());
        return false;
    }
    const char* input = GetInputName();
    std::error_code differs;
    if (!OverwritesInput() && input && std::filesystem::equivalent(path, input, differs)) {
        Error(
            "Output file '%s' is the input file '%s'.  "
            "Choose another file, or the option OVERWRITE INPUT.\n",
            path.c_str(), input);
        return false;
    }
    return true;
}

bool SegyDiskOutput::FindEndOfFile(const LineHeader& line, int samples, Target& target) {
    std::error_code unknown;
    const auto size = static_cast<std::int64_t>(std::filesystem::file_size(target.path, unknown));
    if (unknown) {  // new, most of all
        target.mode = SegyWriter::Mode::kAppend;
        return true;
    }
    if (size <= kLineHeaderBytes) {
        if (size > 0 && size < kLineHeaderBytes) {
            Warning("The output file is shorter than a SEG-Y header; it is written anew.\n");
        }
        return true;
    }
    const auto refuse = [&] {
        Error("Cannot append to output file '%s'.\n", target.path.c_str());
        return false;
    };
    SegyLayout layout;
    std::int64_t left_over = 0;
    if (!ReadLayout(target.path, layout, target.traces, left_over)) return refuse();
    if (layout.interval_us() != whole_us(line)) {
        refuse();
        Error("Sample rates of output file (%3.1f) and new data (%3.1f) differ.\n",
              layout.interval_ms(), line.sample_interval() / double{kInternalPerMs});
        return false;
    }
    if (layout.samples != samples) {
        refuse();
        Error("Number of samples of output file (%3d) and new data (%3d) differ.\n", layout.samples,
              samples);
        return false;
    }
    if (left_over != 0) {
        // Traces behind part of a record could never be read again.
        refuse();
        Error("It ends in an incomplete trace of %lld bytes.\n", static_cast<long long>(left_over));
        return false;
    }
    target.format = layout.format;
    // A file with headers alone starts anew: the new headers take the place of the old.
    if (target.traces > 0) target.mode = SegyWriter::Mode::kAppend;
    return true;
}

bool SegyDiskOutput::ReadLayout(const std::string& path, SegyLayout& layout, std::int64_t& traces,
                                std::int64_t& left_over) {
    const char* header_path = GetInputHeaderName();
    SegyReader reader;
    const SegyOpening opening = reader.open(
        path,
        {.header_path = header_path ? header_path : DefaultHeaderPath(), .speaker = GetName()});
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
        if (writer_.write_line_header(encoder_.line_header(line)) != 0) {
            FailWriting("Cannot 'SEG Y Line Header' write to file");
            return kKeepBack;
        }
    }
    if (OverwritesInput() && GetInputPosition() <= encoder_.encoded()) {
        Error("Trace %lld would be written over a record that the input has still to read.\n",
              static_cast<long long>(encoder_.encoded() + 1));
        TerminateJob(kJobError);
        return kKeepBack;
    }
    const std::span<const std::byte> record = encoder_.encode(header, samples);
    const std::size_t written = writer_.write_record(record);
    if (written < record.size()) {
        FailWriting(written < std::size_t{kTraceHeaderBytes}
                        ? "Cannot write 'SEG Y Trace Header' to file"
                        : "Cannot write 'SEG Y Trace Data' to file");
        return kKeepBack;
    }
    return kPassOn;
}

void SegyDiskOutput::EndRun() {
    if (prepared_ && writer_.finish() != 0) return FailWriting("Cannot finish writing to file");
    const auto traces = static_cast<long long>(encoder_.encoded());
    if (traces == 0) {
        Warning("No trace came: nothing was written to '%s'.\n",
                prepared_ ? path_.c_str() : file_.c_str());
    } else {
        Message("Wrote %lld traces of %d samples to '%s'.\n", traces, encoder_.samples(),
                path_.c_str());
    }
    if (encoder_.not_finite() > 0) {
        Warning(
            "%lld samples were not finite numbers: NaN was written as 0, an infinity as the "
            "largest value of its sign.\n",
            static_cast<long long>(encoder_.not_finite()));
    }
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
    Error("%s.\n", writer_.reason().c_str());
    TerminateJob(kJobError);
}

}  // namespace halvern
