#include "job/chain.h"

#include <algorithm>

#include "flow/flow_rules.h"
#include "foundation/messages.h"

namespace halvern {

std::unique_ptr<FlowItem> BuildChain(const FlowSections& sections, const FlowItemFactory& create) {
    const std::vector<CompositionFault> faults = composition_faults(sections);
    std::unique_ptr<FlowItem> head;
    FlowItem* last = nullptr;
    for (const FlowSection& section : sections) {
        if (section.disabled) continue;
        std::unique_ptr<FlowItem> item = create(section);
        const auto fault = std::ranges::find(faults, &section, &CompositionFault::section);
        if (fault != faults.end()) {
            LogPrint("PARAMETER ERROR:  %s\n", fault->text.c_str());
            TerminateJob(kJobError);
            return nullptr;
        }
        if (!item) continue;
        if (last) {
            last = &last->SetNext(std::move(item));
        } else {
            head = std::move(item);
            last = head.get();
        }
    }
    return head;
}

}  // namespace halvern
