#pragma once

#include <string>
#include <string_view>

namespace halvern {

/// The separator that paths are built with: "/" here, "\" on Windows.
extern const char kPathSeparator;

/// The installation root: the parent of the directory that holds the programs. Process-wide, set
/// once at start by SetSystemDirectory (or by a test); empty before.
const std::string& SystemDirectory();
void SetSystemDirectory(std::string root);

/// The installation root that a program belongs to, from the program's absolute path; the root
/// directory itself for one in "/bin". Empty for an empty path.
std::string SystemDirectoryOf(const std::string& program);

/// `directory` + separator + `name`, resolved without regard to case: the tree was designed for a
/// file system that ignores case, so where an entry exists whose name differs only in case, that
/// entry is meant. An exact match wins; spelled as given when none exists. `name` may hold several
/// levels separated by "/", each resolved in turn.
std::string TreePath(std::string_view directory, std::string_view name);

/// "%s/header/default" under the system directory: the installed header description.
std::string DefaultHeaderPath();

}  // namespace halvern
