#pragma once

#include "flow/flow_item.h"

namespace halvern {

/// Index of a header word that the item cannot do without. Where the definition lacks it the job
/// ends with an error naming it, and -1 comes back.
int RequireHeaderWord(const FlowItem& item, const TraceHeaderDefinition& header, const char* name);

/// Whether the line has a sample interval; where it has none the job ends with an error.
bool RequireSampleInterval(const FlowItem& item, const LineHeader& line);

}  // namespace halvern
