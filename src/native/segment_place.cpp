#include "native/segment_place.h"

#include <cstdlib>
#include <filesystem>

#include "foundation/global_config.h"
#include "foundation/prospect.h"
#include "platform/create_file.h"
#include "platform/disk_space.h"

namespace halvern {

namespace {

constexpr double kMegabyte = 1e6;
constexpr double kSpareMb = 10;       // beyond the minimum, for a new pair of files to make sense
constexpr int kRecordsBetween = 100;  // from one look at the free space to the next

unsigned random_number() {
    const auto first = static_cast<unsigned>(std::rand());
    return first * static_cast<unsigned>(std::rand());
}

}  // namespace

NativePlaces NativePlaces::configured() {
    NativePlaces places{
        .directories = {},
        .min_disk_space_mb = CurrentConfig().min_disk_space_mb(),
        .max_file_size_mb = CurrentConfig().max_file_size_mb(),
        .free_space = [](const std::string& path) { return free_disk_bytes(path).value_or(-1); }};
    const std::string prospect =
        CurrentProspect().is_open() ? CurrentProspect().name() : std::string("default");
    for (const std::string& root : CurrentConfig().data_directories()) {
        places.directories.push_back(root + "/" + prospect + "/data");
    }
    return places;
}

std::optional<std::string> NativePlaces::choose() const {
    for (std::size_t i = directories.size(); i-- > 0;) {
        const std::string& directory = directories[i];
        std::error_code ignored;
        std::filesystem::create_directories(directory, ignored);
        const std::int64_t free = free_space(directory);
        if (static_cast<double>(free) / kMegabyte > min_disk_space_mb + kSpareMb) return directory;
    }
    return std::nullopt;
}

std::optional<std::string> NativePlaces::create_file(const char* prefix) const {
    const auto directory = choose();
    if (!directory) return std::nullopt;
    for (;;) {
        const std::string path = *directory + "/" + prefix + std::to_string(random_number());
        const std::error_code failed = create_exclusively(path);
        if (!failed) return path;
        if (failed != std::errc::file_exists) return std::nullopt;
    }
}

std::optional<NativeSegment> NativePlaces::create_segment() const {
    const auto directory = choose();
    if (!directory) return std::nullopt;
    for (;;) {
        const std::string number = std::to_string(random_number());
        const NativeSegment segment{*directory + "/HEAD" + number, *directory + "/DATA" + number};
        std::error_code failed = create_exclusively(segment.head_path);
        if (failed == std::errc::file_exists) continue;
        if (failed) return std::nullopt;
        failed = create_exclusively(segment.data_path);
        if (!failed) return segment;
        std::error_code ignored;
        std::filesystem::remove(segment.head_path, ignored);
        if (failed != std::errc::file_exists) return std::nullopt;
    }
}

bool NativePlaces::has_room(const std::string& data_path, std::int64_t data_bytes,
                            std::int64_t record_bytes) const {
    const std::string directory = std::filesystem::path(data_path).parent_path().string();
    const std::int64_t free = free_space(directory + "/SCR0123456789");
    const double left =
        (static_cast<double>(free) - static_cast<double>(record_bytes) * kRecordsBetween) /
        kMegabyte;
    return left >= min_disk_space_mb &&
           static_cast<double>(data_bytes) / kMegabyte < max_file_size_mb;
}

}  // namespace halvern
