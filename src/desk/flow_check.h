#pragma once

#include <string>
#include <vector>

#include "desk/flow_text.h"

namespace halvern {

/// Something that is wrong with a flow, found without running it.
struct Finding {
    int line = 0;        ///< of the flow file, counted from 1; 0: of the flow as a whole
    bool error = false;  ///< the job would fail or do another thing than the flow says
    std::string text;
};

/// Everything that can be known of a flow without running it, in the order of its lines: sections,
/// keys, values, header words, files and how the items go together. Disabled sections are held to
/// their keys and values only. Relative files count from the current directory, which is where a
/// job would start; the current prospect and the site defaults are taken into account.
std::vector<Finding> check_flow(const FlowText& flow);

}  // namespace halvern
