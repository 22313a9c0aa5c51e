#pragma once

#include <memory>

#include "flow/flow_item.h"

namespace halvern {

/// Creates the item of a section's kind from its lines; a kind that is not built yet gives a
/// stand-in that stops the job. Null for anything that is no kind.
std::unique_ptr<FlowItem> CreateFlowItem(const FlowSection& section, LogFlag log);

}  // namespace halvern
