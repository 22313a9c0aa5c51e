#pragma once

#include <string>

namespace halvern {

/// Absolute path of this program: the one it was started by when `argument0` is the path, not only
/// the name, of an existing file, links left as they are, so that a link in one installation may
/// lead to a program in another; else what the system reports.
std::string program_path(const std::string& argument0);

/// What the system reports, with links resolved; empty when it does not say.
std::string reported_program_path();

}  // namespace halvern
