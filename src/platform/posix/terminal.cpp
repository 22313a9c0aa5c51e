#include "platform/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace halvern {

bool is_terminal(std::FILE* stream) { return ::isatty(::fileno(stream)) != 0; }

int terminal_columns(std::FILE* stream) {
    winsize size{};
    return ::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace halvern
