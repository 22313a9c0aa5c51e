#include "platform/disk_space.h"

#include <algorithm>
#include <filesystem>
#include <limits>

namespace halvern {

namespace fs = std::filesystem;

std::optional<std::int64_t> free_disk_bytes(const std::string& path) {
    std::error_code error;
    fs::path place = fs::absolute(path, error);
    while (!fs::exists(place, error) && place.has_relative_path()) place = place.parent_path();
    const fs::space_info space = fs::space(place, error);
    if (error) return {};
    constexpr std::uintmax_t kMost = std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(std::min(space.available, kMost));
}

}  // namespace halvern
