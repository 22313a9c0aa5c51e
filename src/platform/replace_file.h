#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/fault.h"
#include "platform/file_lock.h"

namespace halvern {

/// How far new contents are brought before they take the old ones' place: kDisk outlasts a power
/// cut, kSystem the end of the process, which is enough for a file that is worth no more than data
/// the system still holds, and does not wait for that data to be written.
enum class Reach { kDisk, kSystem };

/// A large file that is being made to take the place of `path`, or to be it: written beside it and
/// then renamed, so that a reader sees the old file or the whole new one. Until then a failure, or
/// letting go of the object, leaves the old file as it was and nothing else. Move-only.
class ReplacedFile {
public:
    /// Makes the empty file beside() it. A link stays, and its target is replaced. A fault when
    /// `path` is a directory or device, or nothing can be made beside it.
    static Result<ReplacedFile> begin(const std::string& path);

    ~ReplacedFile();
    ReplacedFile(ReplacedFile&& other) noexcept
        : target_(std::move(other.target_)),
          beside_(std::exchange(other.beside_, {})),
          lock_(std::move(other.lock_)) {}
    ReplacedFile& operator=(ReplacedFile&&) = delete;

    /// What to write to, by whatever writes files; closed before commit().
    const std::string& beside() const { return beside_; }
    /// Renames it over `path`, with the permissions of a file that was there. A `lock` of the old
    /// file becomes one of the new.
    Fault commit(Reach reach = Reach::kSystem, FileLock* lock = nullptr);

private:
    ReplacedFile(std::string target, std::string beside, FileLock lock)
        : target_(std::move(target)), beside_(std::move(beside)), lock_(std::move(lock)) {}

    std::string target_;
    std::string beside_;  // empty: committed
    FileLock lock_;       // of the file beside: its writer is alive, on whatever machine
};

/// Gives the file `path` the contents `bytes` in the same way, all or nothing.
Fault replace_file(const std::string& path, std::string_view bytes, Reach reach = Reach::kDisk,
                   FileLock* lock = nullptr);

/// The number of the process that writes, or wrote when it was killed, a file of that name to
/// replace another; nothing for every other name.
std::optional<std::int64_t> unfinished_file_owner(std::string_view name);

}  // namespace halvern
