#pragma once

#include "flow/process_flow_item.h"

namespace halvern {

/// Adds a value to every sample and then, when asked to, negates it: a reversal of polarity, not in
/// time.
class TraceMath final : public ProcessFlowItem {
public:
    TraceMath(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;

private:
    ParameterList Parameters() override;

    float added_{};
    int reverse_{};  // 1: negates
};

}  // namespace halvern
