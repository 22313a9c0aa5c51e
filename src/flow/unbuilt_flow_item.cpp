#include "flow/unbuilt_flow_item.h"

namespace halvern {

UnbuiltFlowItem::UnbuiltFlowItem(const FlowSection& section, LogFlag log)
    : FlowItem(section.kind, log) {
    Configure(section);
}

void UnbuiltFlowItem::WriteParameters(std::FILE* stream) {
    FlowItem::WriteParameters(stream);
    for (const std::string& line : lines_) std::fprintf(stream, "%s\n", line.c_str());
}

void UnbuiltFlowItem::PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) {
    Refuse();
}

int UnbuiltFlowItem::FlushAtEnd() {
    Refuse();
    return 1;
}

void UnbuiltFlowItem::Refuse() {
    Error(
        "The flow item '%s' is not available in this version.  "
        "Remove or disable it and re-run.\n",
        GetName());
    TerminateJob(kJobError);
}

}  // namespace halvern
