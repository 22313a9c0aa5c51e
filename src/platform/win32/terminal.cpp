#include "platform/terminal.h"

#include <io.h>

namespace halvern {

bool is_terminal(std::FILE* stream) { return ::_isatty(::_fileno(stream)) != 0; }

}  // namespace halvern
