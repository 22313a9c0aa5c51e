#pragma once

#include <string>
#include <vector>

#include "flow/flow_document.h"

namespace halvern {

/// Something that is wrong with a flow, or worth knowing, found without running it.
struct Finding {
    int line = 0;        ///< of the flow file, counted from 1; 0: of the flow as a whole
    bool error = false;  ///< the job would end by it, or lose data
    std::string text;
};

/// Everything that can be known of a flow without running it, in the order of its lines: what its
/// lines say, how its items go together, and what the items themselves find when the chain is
/// prepared with the line header of the real input; nothing is made, changed or deleted. Disabled
/// sections are held to their keys and values only. Relative files count from the current
/// directory, which is where a job would start; the current prospect and the site defaults are
/// taken into account.
std::vector<Finding> check_flow(const FlowDocument& flow);

/// Whether one of them is an error.
bool has_error(const std::vector<Finding>& findings);

}  // namespace halvern
