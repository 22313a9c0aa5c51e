#include "foundation/messages.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/log_file.h"

namespace halvern {

namespace {

constexpr std::size_t kLogBuffer = 10000;

// At most one of them is set; none is standard output, which is nowhere.
struct Destination {
    std::FILE* stream = nullptr;
    std::optional<LogFile> file;
    std::string path;         // the file's
    bool has_failed = false;  // and standard error knows
};

Destination& destination() {
    static Destination destination;
    return destination;
}

// The formatted text, cut to the buffer; a line that is cut still ends.
HALVERN_PRINTF(3, 0)
std::string_view format_text(char* buffer, std::size_t size, const char* format,
                             std::va_list arguments) {
    const int length = std::vsnprintf(buffer, size, format, arguments);
    if (length < 0) return {};
    const std::size_t whole = static_cast<std::size_t>(length);
    if (whole < size) return {buffer, whole};
    if (std::string_view(format).ends_with('\n')) buffer[size - 2] = '\n';
    return {buffer, size - 1};
}

}  // namespace

void LogDestination::UseStandardOutput() { Close(); }

Fault LogDestination::UseFile(const std::string& path) {
    Result<LogFile> file = LogFile::create(path);
    if (!file) return file.fault();
    Close();
    destination().file = std::move(*file);
    destination().path = path;
    return {};
}

void LogDestination::UseStream(std::FILE* stream) {
    Close();
    if (stream != stdout) destination().stream = stream;
}

void LogDestination::Close() { destination() = {}; }

void LogPrintV(const char* format, std::va_list arguments) {
    Destination& to = destination();
    if (to.stream) {
        (void)std::vfprintf(to.stream, format, arguments);
    } else if (to.file) {
        char buffer[kLogBuffer];
        const Fault fault = to.file->write(format_text(buffer, sizeof buffer, format, arguments));
        if (!fault || std::exchange(to.has_failed, true)) return;
        std::fprintf(stderr,
                     "halvern2: the log file '%s' cannot be written: %s. The job goes on.\n",
                     to.path.c_str(), fault.reason().c_str());
    }
}

void LogPrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    LogPrintV(format, arguments);
    va_end(arguments);
}

}  // namespace halvern
