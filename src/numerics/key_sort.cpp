#include "numerics/key_sort.h"

#include <algorithm>

namespace halvern::numerics {

namespace {

// Below, above or equal; a NaN above every number and equal to another NaN.
bool below(const KeyRecord& a, const KeyRecord& b) {
    for (std::size_t i = 0; i < a.keys.size(); ++i) {
        const double x = a.keys[i];
        const double y = b.keys[i];
        if (x == y) continue;
        if (x < y) return true;
        if (y < x) return false;
        const bool x_is_nan = x != x;
        const bool y_is_nan = y != y;
        if (x_is_nan != y_is_nan) return y_is_nan;
    }
    return a.arrival < b.arrival;
}

}  // namespace

void sort_records(std::span<KeyRecord> records) { std::ranges::sort(records, below); }

}  // namespace halvern::numerics
