#include "platform/terminal.h"

#include <unistd.h>

namespace halvern {

bool is_terminal(std::FILE* stream) { return ::isatty(::fileno(stream)) != 0; }

}  // namespace halvern
