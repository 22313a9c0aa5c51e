#pragma once

#include "items/offset_table_item.h"

namespace halvern {

/// Zeroes the start of every trace down to a time that a table gives for the trace's offset. No
/// taper: the first sample after the mute keeps its full amplitude.
class Mute final : public OffsetTableItem {
public:
    Mute(const FlowSection& section, LogFlag log);

    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;

private:
    ParameterList Parameters() override { return {TableParameter(), FileParameter()}; }
};

}  // namespace halvern
