#include "flow/flow_rules.h"

namespace halvern {

std::vector<CompositionFault> composition_faults(const FlowSections& sections) {
    std::vector<CompositionFault> faults;
    const FlowItemKindEntry* last = nullptr;
    bool sorted = false;
    for (const FlowSection& section : sections) {
        if (section.disabled) continue;
        const FlowItemKindEntry& item = flow_item_kind(section.kind);
        const auto refuse = [&](const std::string& why) { faults.push_back({&section, why}); };
        if (section.kind == FlowItemKind::kTraceSort) sorted = true;
        if (sorted && item.base == FlowItemBase::kDisplay) {
            refuse(std::string("A display '") + item.name +
                   "' cannot be run with a 'TRACE SORT' process.\nRun the 'TRACE SORT' to an "
                   "output file and use the output as an input to your display.\nOR sort the "
                   "traces on input during the SEGY Disk Input.");
        }
        const bool exclusive = item.base == FlowItemBase::kExclusive;
        if (last && (exclusive || last->base == FlowItemBase::kExclusive)) {
            refuse(std::string("An exclusive process '") + (exclusive ? item : *last).name +
                   "' cannot be run with other flow items.");
        } else if (last && item.base == FlowItemBase::kInput) {
            refuse(std::string("An input '") + item.name +
                   "' must be the first item of its flow, and the only input.");
        }
        last = &item;
    }
    return faults;
}

}  // namespace halvern
