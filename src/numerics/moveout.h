#pragma once

#include <cstdint>
#include <span>

namespace halvern::numerics {

/// Where the samples of a moved-out trace come from, on the hyperbola of an offset and one velocity
/// a sample:
///     moved[i] = sqrt(times_squared[i] + offset_squared / velocities_squared[i])
///     sources[i] = the whole part of moved[i] / interval, or the number of samples where the trace
///                  does not reach that far or the quotient is not a number
/// with every operation rounded on its own, on every processor alike. Velocities are not 0, times
/// and interval are in one unit. All spans are equally long and do not overlap; false, and nothing
/// done, when they are not equally long. Literature: Dix, Geophysics 20 (1955).
bool moveout(std::span<const double> times_squared, double offset_squared,
             std::span<const double> velocities_squared, double interval, std::span<double> moved,
             std::span<std::int32_t> sources);

}  // namespace halvern::numerics
