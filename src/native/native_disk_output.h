#pragma once

#include <optional>
#include <string>

#include "flow/disk_output_flow_item.h"
#include "native/native_writer.h"

namespace halvern {

/// Writes the traces that reach it to a native dataset: a new one, after the traces of one that
/// exists, or over those of the flow's own input. Every trace is passed on.
class NativeDiskOutput final : public DiskOutputFlowItem {
public:
    NativeDiskOutput(const FlowSection& section, LogFlag log);

    /// Checks the parameters and opens the dataset; ends the job, before it touches any file, when
    /// the dataset cannot take this line's traces. One that exists and is to be replaced stays as
    /// it is until the first trace.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

    /// Where new files go, instead of what the configuration says; for tests.
    void UsePlaces(NativePlaces places) { places_ = std::move(places); }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    bool FailToOpen(const Fault& fault) const override;
    NativeWriter::Mode mode() const { return static_cast<NativeWriter::Mode>(write_type()); }

    // The steps of PrepareRun; false after an error line.
    bool FindDataset(const std::string& path);
    bool CheckDataset(const LineHeader& line, const TraceHeaderDefinition& header);
    bool CheckPartsAreNotRead() const;
    bool CheckDescription(const TraceHeaderDefinition& own,
                          const TraceHeaderDefinition& header) const;
    bool Open(const TraceHeaderDefinition& header);

    std::optional<NativePlaces> places_;

    // From PrepareRun to EndRun:
    NativeWriter::Target target_;  // until it is opened
    NativeLayout layout_;
    RecordEncoder encoder_;
    NativeWriter writer_;
    bool open_ = false;
};

}  // namespace halvern
