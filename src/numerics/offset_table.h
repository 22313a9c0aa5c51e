#pragma once

#include <span>

namespace halvern::numerics {

/// The value at `offset` of a table given at `offsets`, which ascend: linear between the entries,
/// the first value up to and at the first offset, the last value from the last offset on, an
/// entry's own value at its offset. Where entries share an offset, the value jumps from the first's
/// to the last's just after it. An offset that is not a number takes the last value.
/// `offsets` and `values` are equally long; an empty table gives NaN.
[[nodiscard]] double look_up(std::span<const double> offsets, std::span<const double> values,
                             double offset);

}  // namespace halvern::numerics
