#pragma once

#include <vector>

#include "flow/process_flow_item.h"

namespace halvern {

/// Instantaneous automatic gain control: divides each sample by the root of the summed energy of
/// the input samples in a window centred on it. The sum, not its mean: the window length is meant
/// to stay in the gain, so a trace of constant amplitude comes out at about 1 / sqrt(window
/// samples).
class Agc final : public ProcessFlowItem {
public:
    Agc(const FlowSection& section, LogFlag log);
    /// With an explicit window length in milliseconds.
    Agc(int window_ms, LogFlag log);

    /// Converts the window to samples and sizes the energy buffer. Ends the job on a window below
    /// 1 ms or one too long to convert; a window longer than the trace is cut with a warning.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override { energies_ = {}; }

private:
    ParameterList Parameters() override;

    int window_ms_{};
    std::size_t half_window_{};     // samples before the centre; as many after, less one
    std::vector<double> energies_;  // [samples] of the input trace; empty outside a run
};

}  // namespace halvern
