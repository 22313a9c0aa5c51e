#pragma once

#include <string>
#include <vector>

#include "flow/process_flow_item.h"

namespace halvern {

/// Stands in for a kind that is known but not built yet: it keeps the section's lines as they are,
/// so that a flow can be edited without losing them, and stops the job with an error that names the
/// item before any trace reaches it. Nothing is ever skipped in silence.
class UnbuiltFlowItem final : public FlowItem, public RunsFlow {
public:
    UnbuiltFlowItem(const FlowSection& section, LogFlag log);

    void WriteParameters(std::FILE* stream) override;
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int FlushAtEnd() override;  // an input without traces prepares nothing
    void ReadParameters(const FlowSection& section) override { lines_ = section.lines; }
    void RunInput() override { Refuse(); }
    void ResumeInput() override { Refuse(); }

private:
    void Refuse();

    std::vector<std::string> lines_;
};

}  // namespace halvern
