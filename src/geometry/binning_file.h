#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/progress.h"
#include "foundation/report.h"

namespace halvern {

/// One member of a bin or of a point: four bytes each, kept as they are whatever they mean.
struct BinMember {
    std::uint32_t first = 0;
    std::uint32_t second = 0;
};

/// A bin that is not empty; it may still have no members. Rows and columns count from 0.
struct Bin {
    std::int64_t row = 0;
    std::int64_t column = 0;
    std::vector<BinMember> members;
};

struct BinnedPoint {
    std::array<std::int32_t, 3> numbers{};
    std::array<double, 2> coordinates{};
    std::vector<std::uint32_t> members;
};

/// A grid and the geometry that was binned into it. Values whose meaning is not known here are
/// kept as they were read.
struct BinningFile {
    /// Rows and columns: first and last of each, and two more integers of the grid.
    std::int32_t row_start = 0;
    std::int32_t row_end = 0;
    std::int32_t column_start = 0;
    std::int32_t column_end = 0;
    std::array<std::int32_t, 2> more_ranges{};
    double x_origin = 0;
    double y_origin = 0;
    std::array<double, 3> more_geometry{};  ///< bin sizes and rotation
    /// Numbering of the grid; the row increment is its second value, the column increment its
    /// fifth.
    std::array<std::int32_t, 6> numbering{0, 1, 0, 0, 1, 0};
    int version = 3;  ///< of the file that was read: 1, 2 or 3
    char version_mark = '1';
    std::vector<Bin> bins;  ///< those that are not empty, by row and then by column
    std::vector<BinnedPoint> first_points;
    std::vector<BinnedPoint> second_points;

    /// (end - start) / increment + 1, in integer division; 0 where that is no number of rows.
    std::int64_t rows() const;
    std::int64_t columns() const;
};

/// Reads a binning file of version 1, 2 or 3. 0, or -1 with errors to the reporter when it cannot
/// be read or is no whole binning file, or when the progress asks to stop. `file` then holds
/// nothing of use.
[[nodiscard]] int read_binning_file(const std::string& path, BinningFile& file,
                                    const Reporter& report, Progress* progress = nullptr);

/// Writes a binning file as version 3. It is written beside `path` and renamed, so that a file that
/// was there stays whole until then. 0, or -1 with an error when rows and columns make no
/// grid, bins are out of order or outside it, a bin or a point has more than 65,535 members, it
/// cannot be written, or the progress asks to stop.
[[nodiscard]] int write_binning_file(const std::string& path, const BinningFile& file,
                                     const Reporter& report, Progress* progress = nullptr);

}  // namespace halvern
