#include "native/segment_place.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "foundation/global_config.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "platform/create_file.h"
#include "platform/disk_space.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr double kMegabyte = 1e6;
constexpr double kSpareMb = 10;       // beyond the minimum, for a new pair of files to make sense
constexpr int kRecordsBetween = 100;  // from one look at the free space to the next

unsigned random_number() {
    const auto first = static_cast<unsigned>(std::rand());
    return first * static_cast<unsigned>(std::rand());
}

Fault no_space() { return Fault("no data directory has enough free space"); }

// Makes an empty file of each prefix with one number that was free; the paths, or why there is
// none.
Result<std::vector<std::string>> create_in(const std::string& directory,
                                           const std::vector<const char*>& prefixes) {
    for (;;) {
        const std::string number = std::to_string(random_number());
        std::vector<std::string> paths;
        std::error_code failed;
        for (const char* prefix : prefixes) {
            paths.push_back(directory + "/" + prefix + number);
            failed = create_exclusively(paths.back());
            if (failed) break;
        }
        if (!failed) return paths;
        std::error_code ignored;
        paths.pop_back();
        for (const std::string& path : paths) fs::remove(path, ignored);
        if (failed != std::errc::file_exists) {
            return Fault("directory '" + directory + "': " + failed.message(), failed);
        }
    }
}

}  // namespace

NativePlaces NativePlaces::configured() {
    const GlobalConfig& config = CurrentConfig();
    return {
        .roots = config.data_directories(),
        .prospect = CurrentProspect().is_open() ? CurrentProspect().name() : "default",
        .min_disk_space_mb = config.min_disk_space_mb(),
        .max_file_size_mb = config.max_file_size_mb(),
        .free_space = [](const std::string& path) { return free_disk_bytes(path).value_or(-1); }};
}

bool NativePlaces::has_space(const std::string& directory) const {
    return static_cast<double>(free_space(directory)) / kMegabyte > min_disk_space_mb + kSpareMb;
}

Fault NativePlaces::obstacle() const {
    const auto serves = [this](const std::string& root) {
        std::error_code ignored;
        return fs::is_directory(root, ignored) && has_space(root);
    };
    return std::ranges::any_of(roots, serves) ? Fault() : no_space();
}

Result<std::vector<std::string>> NativePlaces::create_together(
    const std::vector<const char*>& prefixes) const {
    Fault fault = no_space();
    for (std::size_t i = roots.size(); i-- > 0;) {
        const std::string& root = roots[i];
        std::error_code ignored;
        if (!fs::is_directory(root, ignored)) {
            fault = Fault("'" + root + "' is no directory");
            continue;
        }
        const std::string own = TreePath(root, prospect);
        const std::string directory = TreePath(own, "data");
        fs::create_directory(own, ignored);
        fs::create_directory(directory, ignored);
        if (!has_space(directory)) continue;
        auto created = create_in(directory, prefixes);
        if (created) return created;
        fault = created.fault();
    }
    return fault;
}

Result<std::string> NativePlaces::create_file(const char* prefix) const {
    const auto created = create_together({prefix});
    if (!created) return created.fault();
    return created->front();
}

Result<NativeSegment> NativePlaces::create_segment() const {
    const auto created = create_together({"HEAD", "DATA"});
    if (!created) return created.fault();
    return NativeSegment{(*created)[0], (*created)[1]};
}

bool NativePlaces::owns(const std::string& path, std::string_view prefix) const {
    const fs::path file = path;
    const std::string name = file.filename().string();
    const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
    if (!name.starts_with(prefix) || name.size() == prefix.size() ||
        !std::ranges::all_of(name.substr(prefix.size()), is_digit)) {
        return false;
    }
    // A link may lead anywhere; the directories above may be links, as a disk is set up.
    std::error_code error;
    if (fs::is_symlink(file, error)) return false;
    const fs::path directory = file.parent_path();
    if (directory.filename() !=
        fs::path(TreePath(directory.parent_path().string(), "data")).filename())
        return false;
    const fs::path root = directory.parent_path().parent_path();
    return std::ranges::any_of(
        roots, [&](const std::string& own) { return fs::equivalent(own, root, error); });
}

bool NativePlaces::has_room(const std::string& data_path, std::int64_t data_bytes,
                            std::int64_t record_bytes) const {
    const std::string directory = fs::path(data_path).parent_path().string();
    const std::int64_t free = free_space(directory + "/SCR0123456789");
    const double left =
        (static_cast<double>(free) - static_cast<double>(record_bytes) * kRecordsBetween) /
        kMegabyte;
    return left >= min_disk_space_mb &&
           static_cast<double>(data_bytes) / kMegabyte < max_file_size_mb;
}

}  // namespace halvern
