#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace halvern::numerics {

/// What a sort remembers of one of many things to be brought into order: 48 bytes.
struct KeyRecord {
    std::array<double, 4> keys;  ///< compared one after the other
    std::int64_t arrival;        ///< its number among all records, for the order of equal keys
    std::int64_t position;       ///< where the thing itself is kept; only carried along
};

/// Sorts ascending by keys[0], on equality by keys[1], then keys[2], then keys[3]. Records whose
/// four keys are equal stay in the order of their arrival numbers, which makes the order the same
/// on every machine. -0 equals 0; what is not a number comes after everything that is one. In
/// place, with no memory beyond a few kilobytes.
void sort_records(std::span<KeyRecord> records);

}  // namespace halvern::numerics
