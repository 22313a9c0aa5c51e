#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// The system's rule for a command line that is one text, as on Windows: blanks separate arguments
/// except between double quotes; then every double quote is removed. A quoted nothing is an empty
/// argument, a run of blanks separates once.
std::vector<std::string> split_command_line(std::string_view line);

/// The text that split_command_line takes apart again: every argument in double quotes, separated
/// by single blanks. The argument at position `bare` goes without quotes. A double quote inside an
/// argument cannot be passed and is left out.
std::string join_command_line(std::span<const std::string> arguments,
                              std::size_t bare = std::string::npos);

/// This process's arguments: those of main, or on Windows the command line split by the rule above.
std::vector<std::string> program_arguments(int argc, char** argv);

}  // namespace halvern
