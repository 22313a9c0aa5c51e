#pragma once

#include <optional>

#include "items/reshaping_item.h"
#include "numerics/resampler.h"

namespace halvern {

/// Brings every trace to another sample interval; in front of a coarser one a zero-phase filter
/// takes away what it cannot hold.
class Resample final : public ReshapingFlowItem {
public:
    Resample(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job when the interval is none, or none that a header can say.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

private:
    ParameterList Parameters() override;

    double interval_ms_{};
    int antialias_{};
    double corner_{};  // share of the new Nyquist frequency

    std::optional<numerics::Resampler> resampler_;  // empty: the intervals are equal
    SampleInterval old_, new_;
};

}  // namespace halvern
