#pragma once

#include <cstdio>

#include "foundation/messages.h"

namespace halvern {

/// Where lines go that only help to debug the system itself; they never reach the job log.
/// Process-wide. Nowhere (the start value), so that the lines of a trace cost next to nothing.
class DebugOutput {
public:
    /// A C stream, not owned; null: nowhere.
    static void UseStream(std::FILE* stream) { stream_ = stream; }
    static std::FILE* stream() { return stream_; }

private:
    static std::FILE* stream_;
};

/// Writes printf-formatted text to the debug output.
HALVERN_PRINTF(1, 2) void DebugPrint(const char* format, ...);

}  // namespace halvern
