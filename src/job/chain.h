#pragma once

#include <functional>
#include <memory>

#include "flow/flow_item.h"

namespace halvern {

/// Makes the item of a section: by CreateFlowItem, with the log flag that the program wants.
using FlowItemFactory = std::function<std::unique_ptr<FlowItem>(const FlowSection& section)>;

/// Creates the items of the sections that are not disabled and links them in file order. Sections
/// that cannot be a flow together (composition_faults) end the job. Null when no section made an
/// item; otherwise the head, which owns the rest.
std::unique_ptr<FlowItem> BuildChain(const FlowSections& sections, const FlowItemFactory& create);

}  // namespace halvern
