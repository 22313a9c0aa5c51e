#include "cli/say.h"

#include <cstdarg>
#include <cstdio>
#include <string>

#include "foundation/words.h"

namespace halvern {

namespace {

HALVERN_PRINTF(2, 0) void print(std::FILE* stream, const char* format, std::va_list arguments) {
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, again);
    va_end(again);
    if (length < 0) return;
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, arguments);
    text.pop_back();
    const std::string shown = printable(text);
    std::fwrite(shown.data(), 1, shown.size(), stream);
}

}  // namespace

void say(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print(stdout, format, arguments);
    va_end(arguments);
}

void say_error(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    print(stderr, format, arguments);
    va_end(arguments);
}

}  // namespace halvern
