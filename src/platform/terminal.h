#pragma once

#include <cstdio>

namespace halvern {

/// Whether a person sees what is written to `stream`, or types what is read from it.
bool is_terminal(std::FILE* stream);

/// How many characters a line of the terminal behind `stream` has; 0 where that is not known.
int terminal_columns(std::FILE* stream);

}  // namespace halvern
