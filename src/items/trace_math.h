#pragma once

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"

namespace halvern {

/// Adds a value to every sample and then, when asked to, negates it: a reversal of polarity, not in
/// time.
class TraceMath final : public ProcessFlowItem {
public:
    TraceMath(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    void PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) override {
        shortened_ = {};
    }
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override { shortened_.report(*this); }

private:
    ParameterList Parameters() override;

    float added_{};
    int reverse_{};  // 1: negates
    ShortenedTraces shortened_;
};

}  // namespace halvern
