#pragma once

#include <memory>
#include <optional>
#include <string>

#include "flow/input_flow_item.h"
#include "segd/trace_reader.h"
#include "tape/tape_change.h"

namespace halvern {

/// Reads SEG-D field records from one tape after the other and sends every channel down the flow as
/// a trace, as segd::TraceReader makes them.
class SegdTapeInput final : public InputFlowItem {
public:
    SegdTapeInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    void ResumeInput() override;
    const char* GetInputHeaderName() override { return header_file_.c_str(); }

protected:
    /// Opens the tape and reads the first record's header; ends the job when that is not possible.
    void OpenSource() override;
    LineHeader& SourceLine() override { return reader_.line(); }
    TraceHeaderDefinition& SourceHeader() override { return reader_.definition(); }
    TraceSamples& SourceSamples() override { return reader_.samples(); }
    ReadResult ReadNext() override;
    bool Reposition(std::int64_t) override { return false; }
    bool CanReposition() const override { return false; }
    void SourceEnded() override;

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    std::string WindowObstacle() const override { return tape_window_obstacle(); }

    // The steps of OpenSource; false after an error line.
    bool CheckParameters() const;
    bool LoadDefinition();
    bool OpenTape();
    bool SkipFiles();
    bool ReadFirstHeader();
    void LogHeader() const;

    bool NextTape();  // false at the end of the last one
    void EndRecord();
    bool CountBadHeader();  // false after the error line about too many
    void LogHeaderFault() const;

    std::string device_name_;
    std::string header_file_;
    int dialect_{};  // a segd::Dialect
    int eject_wait_s_{};
    int trace_length_ms_{};  // 0: all data
    int files_to_skip_{};
    int blocked_{};

    std::unique_ptr<TapeDevice> device_;
    std::optional<TapeChange> change_;
    std::optional<segd::TapeBlockSource> source_;
    segd::TraceReader reader_;

    bool resumed_ = false;
    int files_ = 0;  // read so far, those that failed included
    int bad_headers_ = 0;
    bool said_blocked_ = false;
};

}  // namespace halvern
