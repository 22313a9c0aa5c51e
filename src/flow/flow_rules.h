#pragma once

#include <string>
#include <vector>

#include "flow/flow_document.h"

namespace halvern {

/// What keeps a section from standing where it does in its flow.
struct CompositionFault {
    const FlowSection* section;
    std::string text;  ///< one sentence or more
};

/// Why enabled sections cannot be a flow together, in their order: an input is the first item and
/// the only input, an exclusive item is alone, no display comes after a sort.
std::vector<CompositionFault> composition_faults(const FlowSections& sections);

}  // namespace halvern
