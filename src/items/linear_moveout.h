#pragma once

#include "items/offset_table_item.h"

namespace halvern {

/// Shifts every trace earlier by its offset over a velocity that a table gives for the offset, less
/// a fixed time, to the nearest sample; what comes in at the end is zero. A shift the other way is
/// no delay: see ProcessTrace.
class LinearMoveout final : public OffsetTableItem {
public:
    LinearMoveout(const FlowSection& section, LogFlag log);

    /// A trace that would have to move later by m samples keeps its place instead, its first m
    /// samples repeated through the rest of it and then zeroed themselves. A shift beyond the
    /// trace's length zeroes it all.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;

private:
    ParameterList Parameters() override;

    int time_shift_ms_{};
};

}  // namespace halvern
