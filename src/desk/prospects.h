#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/prospect.h"

namespace halvern {

/// Names of the prospects there are, in order.
std::vector<std::string> prospect_names();

/// The prospect of that name; CommandError when there is none.
Prospect read_prospect(const std::string& name);

/// Makes a prospect with its directories. Without data directories it gets the configuration's
/// first one. CommandError when the name is taken or no name, or a directory is missing.
Prospect create_prospect(const std::string& name, const std::vector<std::string>& directories);

/// What the removal of a prospect would take away.
struct ProspectRemoval {
    std::string name;                      ///< as its file spells it
    std::string file;                      ///< the prospect file
    std::vector<std::string> directories;  ///< its own, one in each data directory
    std::vector<std::string> kept;         ///< own directories that stay, each with the reason
    std::int64_t files = 0;                ///< in the directories
    std::int64_t bytes = 0;
};
ProspectRemoval plan_removal(const std::string& name);

/// Removes what was planned: of each directory the fixed subdirectories, then itself when nothing
/// else is in it. Gives what is still there.
std::vector<std::string> remove_prospect(const ProspectRemoval& removal);

}  // namespace halvern
