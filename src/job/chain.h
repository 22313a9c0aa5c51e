#pragma once

#include <functional>
#include <list>
#include <memory>

#include "flow/flow_item.h"

namespace halvern {

/// Makes the item of a section; CreateFlowItem in the programs.
using FlowItemFactory =
    std::function<std::unique_ptr<FlowItem>(const FlowSection& section, LogFlag log)>;

/// Creates the items of the sections that are not disabled and links them in file order. A display
/// behind a sort, and an exclusive item beside any other, end the job. Null when no section made an
/// item; otherwise the head, which owns the rest.
std::unique_ptr<FlowItem> BuildChain(const std::list<FlowSection>& sections,
                                     const FlowItemFactory& create);

}  // namespace halvern
