#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace halvern {

/// A text file that others read while it grows. Unbuffered: every write reaches the system at once.
class LogFile {
public:
    /// Creates the file, or empties it. Nothing when that fails.
    [[nodiscard]] static std::optional<LogFile> create(const std::string& path);

    ~LogFile() { close(); }
    LogFile(LogFile&& other) noexcept : handle_(std::exchange(other.handle_, kNone)) {}
    LogFile& operator=(LogFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }

    /// Appends `text`, in one call where the system takes it whole. Errors are ignored.
    void write(std::string_view text);

private:
    static constexpr std::intptr_t kNone = -1;
    explicit LogFile(std::intptr_t handle) : handle_(handle) {}
    void close();

    std::intptr_t handle_;
};

}  // namespace halvern
