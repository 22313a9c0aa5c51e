#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/fault.h"

namespace halvern {

/// Keeps every other FileLock, of this process or another, off a file. It ends with its owner,
/// however that ends, and hinders nobody who does not ask for it. Move-only.
class FileLock {
public:
    enum class Missing { kCreate, kFault };  ///< what to do about a file that is not there

    FileLock() = default;  ///< of nothing
    /// Locks the file. A fault where somebody else has it, where it cannot be opened to write, and
    /// for a directory or a pipe. A device, and a file on a system that has no locks, as some
    /// network file systems, are not locked and give no fault.
    static Result<FileLock> take(const std::string& path, Missing missing);

    ~FileLock() { release(); }
    FileLock(FileLock&& other) noexcept
        : handle_(std::exchange(other.handle_, kNone)), created_(other.created_) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(handle_, other.handle_);
        std::swap(created_, other.created_);
        return *this;
    }

    void release();
    bool created() const { return created_; }  ///< the file was not there

    /// Whether a file that is locked cannot be replaced by renaming another over it.
    static const bool kBarsReplacing;

private:
    static constexpr std::intptr_t kNone = -1;
    explicit FileLock(std::intptr_t handle, bool created) : handle_(handle), created_(created) {}

    std::intptr_t handle_ = kNone;  // the system's: a descriptor or a HANDLE
    bool created_ = false;
};

}  // namespace halvern
