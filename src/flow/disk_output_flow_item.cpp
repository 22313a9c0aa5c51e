#include "flow/disk_output_flow_item.h"

#include <filesystem>
#include <utility>

namespace halvern {

namespace {

constexpr int kEnteredTime = 1;
constexpr int kTraceLength = 0;

}  // namespace

ParameterList DiskOutputFlowItem::DiskParameters(const std::string& standard_file,
                                                 const char* file_prompt, const char* file_help) {
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, standard_file},
         .field = {.label = "FileName",
                   .prompt = file_prompt,
                   .help = file_help,
                   .kind = FieldKind::kOutputFile}},
        output_format_parameter(output_format_),
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

void DiskOutputFlowItem::LogParameters() {
    if (write_type_ == kOverwriteInput) return Message("Overwriting input file.\n");
    if (write_type_ == kOverwrite) Message("Overwriting output file %s\n", file_.c_str());
    if (write_type_ == kAppend) Message("Appending to output file %s\n", file_.c_str());
    Message("%s", output_type_line(ChosenFormat()));
    if (use_time_ == kEnteredTime) {
        Message("The traces will be shortened to %d msec.\n", time_ms_);
    } else {
        Message("The current trace length will be used.\n");
    }
}

bool DiskOutputFlowItem::CheckParameters(const LineHeader& line) const {
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
    if (use_time_ == kEnteredTime && !line.sample_interval()) {
        Error("The line has no sample interval, so that no time can be output.\n");
        return false;
    }
    return true;
}

int DiskOutputFlowItem::OutputSamples(const LineHeader& line) const {
    if (use_time_ != kEnteredTime) return line.samples();
    // Whole milliseconds divide, as the length was entered in them; finer sampling divides exactly.
    const SampleInterval interval = line.sample_interval();
    const std::int64_t wanted =
        (interval.whole_ms() > 0 ? time_ms_ / interval.whole_ms() : interval.samples_in(time_ms_)) +
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

bool DiskOutputFlowItem::FindInputPath(const char* item_in_capitals, std::string& path) {
    const char* name = GetInputName();
    if (!name) {
        Error(
            "There is no input file to overwrite.  "
            "Change the option in %s to OVERWRITE or APPEND.\n",
            item_in_capitals);
        return false;
    }
    path = name;
    return true;
}

bool DiskOutputFlowItem::CheckPath(const std::string& path) {
    if (!CheckOutputPath(path, OverwritesInput())) return false;
    for (const FlowItem* item = previous(); item && OverwritesInput(); item = item->previous()) {
        if (item->PassesEveryTrace()) continue;
        Error(
            "Every record of the input is written back to where it came from, but '%s' does "
            "not pass on every trace once and in order.  Choose the option OVERWRITE.\n",
            item->GetName());
        return false;
    }
    checked_path_ = path;
    return true;
}

bool DiskOutputFlowItem::LockExisting(bool& exists) {
    Result<FileLock> lock = FileLock::take(checked_path_, FileLock::Missing::kFault);
    exists = !lock.fault().is_missing();
    if (!lock) return !exists || FailToOpen(lock.fault());
    if (!IsRehearsal()) lock_ = std::move(*lock);
    return true;
}

bool DiskOutputFlowItem::LockNew() {
    if (IsRehearsal()) {
        std::error_code error;
        const auto folder = std::filesystem::absolute(checked_path_, error).parent_path();
        const bool there = std::filesystem::is_directory(folder, error);
        return there || FailToOpen(Fault::of_system(
                            std::make_error_code(std::errc::no_such_file_or_directory)));
    }
    Result<FileLock> lock = FileLock::take(checked_path_, FileLock::Missing::kCreate);
    if (!lock) return FailToOpen(lock.fault());
    lock_ = std::move(*lock);
    return lock_.created() || FailToOpen(Fault("another job has just made it"));
}

bool DiskOutputFlowItem::CheckAppends(const std::string& path, SampleInterval file_interval,
                                      int file_samples, const LineHeader& line, int samples) const {
    if (file_interval != line.sample_interval()) {
        Error("Cannot append to output file '%s'.\n", path.c_str());
        Error("Sample rates of output file (%3.1f) and new data (%3.1f) differ.\n",
              file_interval.ms(), line.sample_interval().ms());
        return false;
    }
    if (file_samples != samples) {
        Error("Cannot append to output file '%s'.\n", path.c_str());
        Error("Number of samples of output file (%3d) and new data (%3d) differ.\n", file_samples,
              samples);
        return false;
    }
    return true;
}

bool DiskOutputFlowItem::CheckFits(SampleInterval input_interval, int input_samples,
                                   const LineHeader& line, int samples) const {
    if (input_samples == samples && input_interval == line.sample_interval()) return true;
    Error(
        "The traces (%d samples of %.3f ms) do not fit the records of the input file "
        "(%d samples of %.3f ms).  To overwrite it would destroy it.\n",
        samples, line.sample_interval().ms(), input_samples, input_interval.ms());
    return false;
}

bool DiskOutputFlowItem::CheckRecordIsItsOwn(const RecordEncoder& encoder) {
    const std::int64_t record = encoder.encoded() + 1;
    if (!OverwritesInput() || InputTracesRead() == record) return true;
    Error(
        "Trace %lld of the input would be written over record %lld.  The records before that one "
        "are written, all others are as they were.\n",
        static_cast<long long>(InputTracesRead()), static_cast<long long>(record));
    TerminateJob(kJobError);
    return false;
}

void DiskOutputFlowItem::LogWritten(const RecordEncoder& encoder) {
    const char* input = OverwritesInput() ? GetInputName() : nullptr;
    encoder.log_written(*this, input ? input : file_);
}

}  // namespace halvern
