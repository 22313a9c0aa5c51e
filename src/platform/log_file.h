#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/fault.h"

namespace halvern {

/// A text file that others read while it grows. Unbuffered: every write reaches the system at once.
class LogFile {
public:
    /// Creates the file, or empties it. Never waits: a pipe that nobody reads is a fault.
    static Result<LogFile> create(const std::string& path);

    ~LogFile() { close(); }
    LogFile(LogFile&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
    LogFile& operator=(LogFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }

    /// Appends `text`, in one call where the system takes it whole.
    Fault write(std::string_view text);

private:
    static constexpr std::intptr_t kNone = -1;
    explicit LogFile(std::intptr_t handle) : handle_(handle) {}
    void close();

    std::intptr_t handle_;
};

}  // namespace halvern
