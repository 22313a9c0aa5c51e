#include "platform/terminal.h"

#include <io.h>
#include <windows.h>

namespace halvern {

bool is_terminal(std::FILE* stream) { return ::_isatty(::_fileno(stream)) != 0; }

int terminal_columns(std::FILE* stream) {
    const auto handle = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(stream)));
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!::GetConsoleScreenBufferInfo(handle, &info)) return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

}  // namespace halvern
