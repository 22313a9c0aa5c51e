#include "numerics/offset_table.h"

#include <algorithm>
#include <limits>

namespace halvern::numerics {

double look_up(std::span<const double> offsets, std::span<const double> values, double offset) {
    if (offsets.empty() || values.size() != offsets.size()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::size_t last = offsets.size() - 1;
    // The first entry at or above the offset; the last one when all before it lie below.
    const auto above = std::partition_point(offsets.begin(), offsets.end() - 1,
                                            [offset](double entry) { return !(entry >= offset); });
    const auto i = static_cast<std::size_t>(above - offsets.begin());
    if (i == 0 || offset == offsets[i]) return values[i];
    if (i == last && !(offset < offsets[last])) return values[last];
    const double below = offsets[i - 1];
    return values[i - 1] + (values[i] - values[i - 1]) * ((offset - below) / (offsets[i] - below));
}

}  // namespace halvern::numerics
