#pragma once

#include <cstdio>

namespace halvern {

/// Whether a person sees what is written to `stream`, or types what is read from it.
bool is_terminal(std::FILE* stream);

}  // namespace halvern
