#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "native/native_layout.h"

namespace halvern {

/// Free bytes of the file system that holds a path; negative when that cannot be told. Asked
/// through this type so that a test can play a disk that fills up.
using FreeSpace = std::function<std::int64_t(const std::string& path)>;

/// Where a dataset may put files, and how full it may make a disk.
struct NativePlaces {
    std::vector<std::string> directories;  ///< one a file system, tried from the last to the first
    int min_disk_space_mb = 50;            ///< stays free
    int max_file_size_mb = 1000;           ///< a DATA file that reached it is the last but one
    FreeSpace free_space;

    /// The data directories of the configuration with the open prospect's "data" below each, its
    /// limits, and the system's own free space.
    static NativePlaces configured();

    /// Makes an empty HEAD and DATA file of one random number in the first directory, from the
    /// last, whose file system has more than the minimum and 10 megabytes free. Nothing when none
    /// has.
    std::optional<NativeSegment> create_segment() const;
    /// Makes an empty file PREFIX%u likewise.
    std::optional<std::string> create_file(const char* prefix) const;

    /// Whether a DATA file of `data_bytes` takes 100 more records of `record_bytes`.
    bool has_room(const std::string& data_path, std::int64_t data_bytes,
                  std::int64_t record_bytes) const;

private:
    std::optional<std::string> choose() const;
};

}  // namespace halvern
