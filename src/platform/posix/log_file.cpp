#include "platform/log_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

Result<LogFile> LogFile::create(const std::string& path) {
    // O_APPEND: a log that somebody empties while it grows goes on from its new end. O_NONBLOCK for
    // opening alone: a pipe whose reader is slow loses no line.
    const int file = ::open(path.c_str(),
                            O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC | O_NONBLOCK, 0666);
    if (file < 0) return Fault::of_errno(errno);
    (void)::fcntl(file, F_SETFL, O_APPEND);
    return LogFile(file);
}

Fault LogFile::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = ::write(static_cast<int>(handle_), text.data(), text.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return Fault::of_errno(errno);
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

void LogFile::close() {
    if (handle_ != kNone) ::close(static_cast<int>(handle_));
    handle_ = kNone;
}

}  // namespace halvern
