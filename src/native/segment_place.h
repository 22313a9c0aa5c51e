#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "native/native_layout.h"

namespace halvern {

/// Free bytes of the file system that holds a path; negative when that cannot be told. Asked
/// through this type so that a test can play a disk that fills up.
using FreeSpace = std::function<std::int64_t(const std::string& path)>;

/// Where a dataset may put files, and how full it may make a disk.
struct NativePlaces {
    /// The data directories, one a file system, tried from the last to the first; files go to
    /// ROOT/prospect/data.
    std::vector<std::string> roots;
    std::string prospect;
    int min_disk_space_mb = 50;   ///< stays free
    int max_file_size_mb = 1000;  ///< a DATA file that reached it is the last but one
    FreeSpace free_space;

    /// The data directories of the configuration, the open prospect, the configuration's limits and
    /// the system's own free space.
    static NativePlaces configured();

    /// Makes an empty HEAD and DATA file of one random number in the first data directory, from the
    /// last, that is there, takes them, and whose file system has more than the minimum and 10
    /// megabytes free. A missing data directory (a disk that is not mounted) is not made; those of
    /// the prospect within it are.
    Result<NativeSegment> create_segment() const;
    /// Makes an empty file PREFIX%u likewise.
    Result<std::string> create_file(const char* prefix) const;
    /// Why neither could be made now, as far as that shows without making anything.
    Fault obstacle() const;

    /// Whether that is a file that a dataset put there: PREFIX%u in the data directory of a
    /// prospect. Nothing else is written to or deleted, whatever a main file lists.
    bool owns(const std::string& path, std::string_view prefix) const;

    /// Whether a DATA file of `data_bytes` takes 100 more records of `record_bytes`.
    bool has_room(const std::string& data_path, std::int64_t data_bytes,
                  std::int64_t record_bytes) const;

private:
    bool has_space(const std::string& directory) const;
    Result<std::vector<std::string>> create_together(
        const std::vector<const char*>& prefixes) const;
};

}  // namespace halvern
