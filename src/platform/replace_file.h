#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace halvern {

/// How far new contents are brought before they take the old ones' place: kDisk outlasts a power
/// cut, kSystem the end of the process, which is enough for a file that is worth no more than data
/// the system still holds, and does not wait for that data to be written.
enum class Reach { kDisk, kSystem };

/// Gives the file `path` the contents `bytes`, all or nothing: they are written beside it, brought
/// as far as `reach` and renamed over it, so a reader sees the old file or the new one. Keeps the
/// permissions of a file that was there; a link stays, and its target is replaced. At an error the
/// file is as it was.
[[nodiscard]] std::error_code replace_file(const std::string& path, std::string_view bytes,
                                           Reach reach = Reach::kDisk);

}  // namespace halvern
