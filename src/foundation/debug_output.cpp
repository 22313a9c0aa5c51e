#include "foundation/debug_output.h"

namespace halvern {

std::FILE* DebugOutput::stream_ = nullptr;

void DebugPrint(const char* format, ...) {
    if (!DebugOutput::stream()) return;
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(DebugOutput::stream(), format, arguments);
    va_end(arguments);
}

}  // namespace halvern
