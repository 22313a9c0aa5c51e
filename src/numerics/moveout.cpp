#include "numerics/moveout.h"

#include "numerics/kernels.h"

namespace halvern::numerics {

bool moveout(std::span<const double> times_squared, double offset_squared,
             std::span<const double> velocities_squared, double interval, std::span<double> moved,
             std::span<std::int32_t> sources) {
    const std::size_t count = times_squared.size();
    if (velocities_squared.size() != count || moved.size() != count || sources.size() != count) {
        return false;
    }
    kernels().moveout(times_squared.data(), offset_squared, velocities_squared.data(), interval,
                      moved.data(), sources.data(), count);
    return true;
}

}  // namespace halvern::numerics
