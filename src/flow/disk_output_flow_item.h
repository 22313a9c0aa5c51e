#pragma once

#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "flow/record_encoder.h"
#include "flow/shared_parameters.h"
#include "platform/fault.h"
#include "platform/file_lock.h"

namespace halvern {

/// What every output to a disk file asks and checks, whatever it writes: the file, the sample
/// format, whether to append or overwrite, and how much of each trace to keep.
class DiskOutputFlowItem : public OutputFlowItem {
public:
    void LogParameters() override;
    bool OverwritesInput() const override { return write_type_ == kOverwriteInput; }
    std::vector<std::string> FilesWritten() const override {
        return checked_path_.empty() ? std::vector<std::string>() : std::vector{checked_path_};
    }

protected:
    using OutputFlowItem::OutputFlowItem;

    enum WriteType { kAppend = 0, kOverwrite = 1, kOverwriteInput = 2 };

    /// The five parameters, in the order of the flow file and the window.
    ParameterList DiskParameters(const std::string& standard_file, const char* file_prompt,
                                 const char* file_help);
    SampleFormat ChosenFormat() const { return chosen_output_format(output_format_); }
    const std::string& file() const { return file_; }
    const std::string& FileWritten() const { return checked_path_; }  ///< empty before CheckPath
    WriteType write_type() const { return static_cast<WriteType>(write_type_); }

    // The checks of PrepareRun; false after an error line.

    bool CheckParameters(const LineHeader& line) const;
    /// The path of the input, which is to be overwritten, into `path`.
    bool FindInputPath(const char* item_in_capitals, std::string& path);
    /// Whether the path was chosen, no other item of the flow has it, and, to overwrite the input,
    /// all of its traces come in their order, as far as the items can tell.
    bool CheckPath(const std::string& path);
    /// Locks the file of that path where it exists; false when another job writes to it or it
    /// cannot be opened.
    bool LockExisting(bool& exists);
    /// Makes the file and locks it. In a rehearsal: whether its directory is there.
    bool LockNew();
    /// Whether a file of that interval and sample count takes traces of this line.
    bool CheckAppends(const std::string& path, SampleInterval file_interval, int file_samples,
                      const LineHeader& line, int samples) const;
    /// Whether overwriting would keep every record of the input where it is.
    bool CheckFits(SampleInterval input_interval, int input_samples, const LineHeader& line,
                   int samples) const;
    /// Whether the next trace goes over the record that it came from; ends the job when not.
    bool CheckRecordIsItsOwn(const RecordEncoder& encoder);

    /// Samples to write a trace, warning where the line has fewer than asked for.
    int OutputSamples(const LineHeader& line) const;

    /// Sums up at the end of the run: traces written, samples that could not be kept.
    void LogWritten(const RecordEncoder& encoder);

    /// Says in the item's words that the file cannot be opened, and why; always false.
    virtual bool FailToOpen(const Fault& fault) const = 0;

    FileLock lock_;  // of the file that is written, from PrepareRun on

private:
    std::string file_;
    std::string checked_path_;  // that no other output may have; empty before the check
    int output_format_{};       // as entered
    int write_type_{};          // a WriteType
    int use_time_{};
    int time_ms_{};
};

}  // namespace halvern
