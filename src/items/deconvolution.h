#pragma once

#include <optional>

#include "flow/process_flow_item.h"
#include "numerics/aligned.h"
#include "numerics/convolver.h"
#include "numerics/correlation.h"
#include "numerics/minimum_phase.h"

namespace halvern {

/// Deconvolves every trace on its own by an operator designed from its autocorrelation: in the time
/// domain the prediction error of a Wiener filter, in the frequency domain a spiking operator from
/// the folded cepstrum. A trace that cannot be deconvolved is reported and goes no further.
class Deconvolution final : public ProcessFlowItem {
public:
    Deconvolution(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job on noise below zero, an operator that is not above zero or does not fit the
    /// trace, in the time domain also on a lag below 1, and on a sample interval below 1 ms.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// kKeepBack, the trace as it was, when it cannot be deconvolved.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Says how many traces were lost, if any.
    void EndRun() override;

private:
    enum Domain { kTime = 1, kFrequency = 2 };

    ParameterList Parameters() override;
    bool CheckParameters(int samples, double interval_ms);
    // From trace_ and autocorrelation_ to result_; false when there is none.
    bool SubtractPrediction();
    bool Spike();
    void ReportLoss();

    int domain_{};  // kTime, or anything else for kFrequency
    float prewhitening_percent_{};
    float operator_ms_{};
    int lag_{};  // samples

    // The run's; empty outside it.
    std::optional<numerics::Correlator> correlator_;
    std::optional<numerics::Convolver> convolver_;
    std::optional<numerics::MinimumPhaseInverse> inverse_;  // frequency domain
    numerics::AlignedDoubles trace_;                        // [samples]
    numerics::AlignedDoubles autocorrelation_;  // [operator samples + lag], zero lag whitened
    numerics::AlignedDoubles operator_;         // [operator samples]
    numerics::AlignedDoubles result_;           // [samples]
    numerics::AlignedDoubles solver_work_;      // time domain
    int lost_ = 0;                              // traces that could not be deconvolved
};

}  // namespace halvern
