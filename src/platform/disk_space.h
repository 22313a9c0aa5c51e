#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace halvern {

/// Bytes that this user may still write to the file system of `path`, a file or directory that
/// need not exist yet. Nothing when the system does not say.
std::optional<std::int64_t> free_disk_bytes(const std::string& path);

}  // namespace halvern
