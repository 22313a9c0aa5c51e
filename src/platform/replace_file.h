#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace halvern {

/// Gives the file `path` the contents `bytes`, all or nothing: they are written beside it, brought
/// to the disk and renamed over it, so a reader sees the old file or the new one, also after a
/// crash. Keeps the permissions of a file that was there; a link stays, and its target is replaced.
/// At an error the file is as it was.
[[nodiscard]] std::error_code replace_file(const std::string& path, std::string_view bytes);

}  // namespace halvern
