#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "platform/fault.h"

namespace halvern {

/// A regular file open for reading at any place, shared with readers and writers. Owns its handle.
class InputFile {
public:
    /// A fault for a missing, unreadable or non-regular file (a directory, a pipe, a device).
    static Result<InputFile> open(const std::string& path);

    ~InputFile() { close(); }
    InputFile(InputFile&& other) noexcept
        : handle_(std::exchange(other.handle_, kNone)), size_(other.size_) {}
    InputFile& operator=(InputFile&& other) noexcept {
        std::swap(handle_, other.handle_);
        std::swap(size_, other.size_);
        return *this;
    }

    std::int64_t size() const { return size_; }  ///< bytes, when it was opened

    /// Fills `bytes` from `offset` on. The count read: fewer at the end of the file, or where the
    /// system fails, which `fault` then says.
    std::size_t read_at(std::int64_t offset, std::span<std::byte> bytes, Fault& fault) const;

private:
    static constexpr std::intptr_t kNone = -1;
    InputFile(std::intptr_t handle, std::int64_t size) : handle_(handle), size_(size) {}
    void close();

    std::intptr_t handle_;  // the system's: a descriptor or a HANDLE
    std::int64_t size_;
};

}  // namespace halvern
