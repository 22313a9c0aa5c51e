#pragma once

#include <cstdint>
#include <string>

#include "flow/item_checks.h"
#include "items/reshaping_item.h"
#include "items/time_window.h"

namespace halvern {

/// Cuts a window in time out of every trace, and fills up with zeros where it reaches beyond the
/// trace. The window lies at fixed times from the first sample, at absolute times, or relative to a
/// time in a header word.
class TraceWindow final : public ReshapingFlowItem {
public:
    TraceWindow(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job when the window holds no sample, or more than a header can say.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

private:
    enum Reference { kFirstSample = 0, kAbsolute = 1, kHeader = 2 };

    ParameterList Parameters() override;

    TimeWindow window_;
    int reference_{};   // a Reference
    std::string word_;  // the time is in, or "NONE"

    // Of a run.
    SampleInterval interval_;
    int reference_word_ = -1;  // DELAY or the user's word
    HeaderWarning delay_{HeaderWarning::kDelay};
    std::int64_t no_time_ = 0;  // traces whose word holds no number
};

}  // namespace halvern
