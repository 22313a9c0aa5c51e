#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "flow/input_flow_item.h"
#include "segd/description.h"
#include "segd/record_reader.h"
#include "tape/tape_change.h"

namespace halvern {

/// Reads SEG-D field records from one tape after the other and sends every channel down the flow as
/// a trace, in millivolts. The line takes sample interval and count from the first record's first
/// seismic channel set.
class SegdTapeInput final : public InputFlowItem {
public:
    SegdTapeInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    void ResumeInput() override;
    const char* GetInputHeaderName() override { return header_file_.c_str(); }

protected:
    /// Opens the tape and reads the first record's header; ends the job when that is not possible.
    void OpenSource() override;
    LineHeader& SourceLine() override { return line_; }
    TraceHeaderDefinition& SourceHeader() override { return definition_; }
    TraceSamples& SourceSamples() override { return samples_; }
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
    void StartTape();
    void LogHeader() const;
    void BuildLine();

    bool NextRecord();  // false at the end of the last tape
    bool NextTape();
    void StartRecord();
    bool EndRecord();  // false after an error line
    bool SkipBadHeader(segd::RecordReader::Record record);
    bool GoToNextFile();
    void LogHeaderFault() const;
    ReadResult SendOn(const segd::Trace& trace);
    void FillHeader(const segd::Trace& trace);
    void FillSamples(const segd::Trace& trace);

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
    std::optional<segd::RecordReader> reader_;
    segd::Description description_;

    LineHeader line_;
    TraceHeaderDefinition definition_;
    TraceSamples samples_;
    std::array<std::byte, kTraceHeaderBytes> image_{};  // of the current trace

    enum Word {
        kFfid,
        kChan,
        kChanSet,
        kTraceId,
        kDTime,
        kHTime,
        kMTime,
        kSTime,
        kSeqChan,
        kSeqFfid,
        kSouLine,
        kSouPoint,
        kSouIndex,
        kRecLine,
        kRecPoint,
        kRecIndex,
        kWords
    };
    std::array<int, kWords> words_{};  // their indexes in the definition

    bool resumed_ = false;
    bool in_record_ = false;
    bool has_first_trace_ = false;  // read already, to see how many samples this tape's traces have
    segd::RecordReader::Next first_trace_{};
    SampleInterval interval_;  // of the line
    int line_samples_ = 0;     // of the line, cut to the trace length
    int files_ = 0;            // read so far, those that failed included
    int records_ = 0;
    int bad_headers_ = 0;
    std::int64_t other_length_ = 0;     // traces cut or filled up
    std::int64_t other_interval_ = 0;   // traces left out
    std::int64_t foreign_numbers_ = 0;  // traces with another file number than their record
    bool said_blocked_ = false;
};

}  // namespace halvern
