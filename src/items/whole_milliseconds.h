#pragma once

#include "flow/flow_item.h"

namespace halvern {

/// The line's sample interval for the items that count in whole milliseconds: the fraction is
/// dropped, so 2500 microseconds count as 2. Below 1 ms such an item cannot work: it ends the job
/// with an error of `item`, and 0 comes back.
inline int whole_milliseconds(const FlowItem& item, const LineHeader& line) {
    const int interval = line.sample_interval();
    const int milliseconds = interval / kInternalPerMs;
    if (milliseconds > 0) return milliseconds;
    item.Error(
        "The sample interval must be at least 1 millisecond.  The line has '%d' microseconds.\n",
        interval / kInternalPerUs);
    TerminateJob(kJobError);
    return 0;
}

}  // namespace halvern
