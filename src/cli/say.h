#pragma once

#include "foundation/messages.h"

namespace halvern {

/// Prints on standard output, or on standard error. Everything a command says goes through these
/// two or a Table: what names, values and reasons hold cannot steer the terminal.
HALVERN_PRINTF(1, 2) void say(const char* format, ...);
HALVERN_PRINTF(1, 2) void say_error(const char* format, ...);

}  // namespace halvern
