#pragma once

#include <cstdint>
#include <string>

#include "flow/disk_output_flow_item.h"
#include "platform/block_writer.h"
#include "segy/segy_layout.h"

namespace halvern {

/// Writes the traces that reach it to a SEG-Y file: a new one, behind the traces of one that
/// exists, or over the records of the flow's own input, front to back.
///
/// Writing over the input works while the input still reads, because records keep their size and no
/// record is written before the input has read it: the n-th trace to arrive goes where the n-th
/// record was, and the input is at least as far. Where that does not hold (another record size,
/// more traces than were read, an input that was moved back) the job ends instead. Traces that the
/// flow drops leave no gap: the first records are written over, the last ones stay.
class SegyDiskOutput final : public DiskOutputFlowItem {
public:
    SegyDiskOutput(const FlowSection& section, LogFlag log);
    ~SegyDiskOutput() override;

    /// Checks the parameters, opens the file and sizes the record buffer. Ends the job, before it
    /// touches any file, when the file cannot take this line's traces.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Stamps the trace's running number, sample count and sample rate into its header, and writes
    /// it. Every trace is passed on.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Closes the file and sums up. Harmless when no trace came.
    void EndRun() override;

private:
    /// The file to write, and what of it stays.
    struct Target {
        std::string path;
        SampleFormat format = SampleFormat::kIeee;
        BlockWriter::Mode mode = BlockWriter::Mode::kCreate;
        std::int64_t offset = 0;  // of the first byte to write, when updating
        std::int64_t traces = 0;  // already in the file
    };

    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    // The steps of PrepareRun; false after an error line.
    bool FindInput(Target& target, SegyLayout& layout);
    bool FindEndOfFile(const LineHeader& line, int samples, Target& target);
    bool ReadLayout(const std::string& path, SegyLayout& layout, std::int64_t& traces,
                    std::int64_t& left_over);
    void FailWriting(const char* what);  // names the file and the system's reason, ends the job

    // From PrepareRun to EndRun:
    std::string path_;
    RecordEncoder encoder_;
    BlockWriter writer_;
    bool prepared_ = false;
    bool line_header_due_ = false;
    std::int64_t traces_to_overwrite_ = 0;
};

}  // namespace halvern
