#pragma once

#include <memory>
#include <string>

#include "flow/process_flow_item.h"
#include "flow/record_encoder.h"
#include "tape/tape_change.h"

namespace halvern {

/// Writes the traces that reach it to a tape as SEG-Y, a block each, and ends it with two
/// filemarks.
class SegyTapeOutput final : public OutputFlowItem {
public:
    SegyTapeOutput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Opens the drive and sizes the record buffer; ends the job when the drive cannot be opened.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Stamps and writes the trace, after the line header if it is the first. Always passed on.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Ends the tape, rewinds it and sums up.
    void EndRun() override;

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    std::string WindowObstacle() const override { return tape_window_obstacle(); }
    bool Write(std::span<const std::byte> block, const char* what);

    std::string device_name_;
    int output_format_{};  // as entered

    std::unique_ptr<TapeDevice> device_;  // from PrepareRun to EndRun
    RecordEncoder encoder_;
};

}  // namespace halvern
