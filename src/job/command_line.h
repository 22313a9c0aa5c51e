#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// Splits a raw command line at blanks outside double quotes; a double quote toggles whether blanks
/// count, and is itself dropped. Runs of blanks separate once.
std::vector<std::string> split_command_line(std::string_view line);

}  // namespace halvern
