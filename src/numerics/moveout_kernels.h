#pragma once

#include "numerics/lanes.h"

namespace halvern::numerics {

/// The loop is plain: built without errno for roots, it turns into full registers by itself.
template <int L>
struct MoveoutKernels {
    static void moveout(const double* __restrict times_squared, double offset_squared,
                        const double* __restrict velocities_squared, double interval,
                        double* __restrict moved, std::int32_t* __restrict sources,
                        std::size_t count) {
        const auto end = static_cast<double>(count);
        for (std::size_t i = 0; i < count; ++i) {
            const double time =
                __builtin_sqrt(times_squared[i] + offset_squared / velocities_squared[i]);
            const double position = time / interval;
            moved[i] = time;
            sources[i] = static_cast<std::int32_t>(position < end ? position : end);
        }
    }
};

}  // namespace halvern::numerics
