#pragma once

#include <cstdint>
#include <string>

#include "flow/disk_output_flow_item.h"
#include "platform/block_writer.h"
#include "segy/segy_layout.h"

namespace halvern {

/// Writes the traces that reach it to a SEG-Y file: a new one, after the traces of one that
/// exists, or over the records of the flow's own input, front to back.
///
/// Writing over the input works while the input still reads, because records keep their size and
/// every record goes back to where it came from, which the input has read. Where that does not hold
/// (another record size, a trace that was dropped, an input that was moved) the job ends instead.
class SegyDiskOutput final : public DiskOutputFlowItem {
public:
    SegyDiskOutput(const FlowSection& section, LogFlag log);
    ~SegyDiskOutput() override;

    /// Checks the parameters, locks the file and sizes the record buffer. Ends the job, before it
    /// touches any file, when the file cannot take this line's traces. A file of which nothing is
    /// to stay is emptied when the first trace comes.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Stamps the trace's running number, sample count and sample rate into its header, and writes
    /// it. Every trace is passed on.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Closes the file and sums up. Harmless when no trace came.
    void EndRun() override;

private:
    /// What of the file stays.
    struct Target {
        SampleFormat format = SampleFormat::kIeee;
        std::int64_t offset = 0;  // of the first byte to write; 0: it is emptied
        std::int64_t traces = 0;  // already in the file
    };

    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    bool FailToOpen(const Fault& fault) const override;
    // The steps of PrepareRun; false after an error line.
    bool FindInput(const LineHeader& line, int samples, Target& target);
    bool FindEndOfFile(const LineHeader& line, int samples, Target& target);
    bool ReadLayout(SegyLayout& layout, std::int64_t& traces, std::int64_t& left_over);
    bool CheckFormat(const SegyLayout& layout) const;
    /// Empties the file and writes the line header; false after the end of the job.
    bool Begin(const LineHeader& line);
    void FailWriting(const char* what);  // names the file and the system's reason, ends the job

    // From PrepareRun to EndRun:
    RecordEncoder encoder_;
    BlockWriter writer_;
    bool empties_ = false;  // by the first record
    std::int64_t traces_to_overwrite_ = 0;
};

}  // namespace halvern
