#pragma once

#include <string>

#include "flow/disk_output_flow_item.h"
#include "native/native_writer.h"

namespace halvern {

/// Writes the traces that reach it to a native dataset: a new one, behind the traces of one that
/// exists, or over those of the flow's own input. Every trace is passed on.
class NativeDiskOutput final : public DiskOutputFlowItem {
public:
    NativeDiskOutput(const FlowSection& section, LogFlag log);

    /// Checks the parameters and opens the dataset; ends the job, before it touches any file, when
    /// the dataset cannot take this line's traces.
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

    std::optional<NativePlaces> places_;

    // From PrepareRun to EndRun:
    std::string path_;
    RecordEncoder encoder_;
    NativeWriter writer_;
    bool prepared_ = false;
};

}  // namespace halvern
