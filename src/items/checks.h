#pragma once

#include "flow/flow_item.h"

namespace halvern {

/// Index of a header word that the item cannot do without. Where the definition lacks it the job
/// ends with an error naming it, and -1 comes back.
int RequireHeaderWord(const FlowItem& item, const TraceHeaderDefinition& header, const char* name);

/// Whether the line has a sample interval; where it has none the job ends with an error.
bool RequireSampleInterval(const FlowItem& item, const LineHeader& line);

/// The line's sample interval for items that count in whole milliseconds: the fraction is dropped,
/// so 2500 microseconds count as 2. Below 1 ms such an item cannot work: the job ends with an
/// error, and 0 comes back.
int RequireWholeMilliseconds(const FlowItem& item, const LineHeader& line);

}  // namespace halvern
