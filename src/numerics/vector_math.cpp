#include "numerics/vector_math.h"

#include <algorithm>
#include <cmath>

#include "numerics/kernels.h"

namespace halvern::numerics {

bool logarithms(std::span<const double> x, std::span<double> out) {
    if (out.size() != x.size()) return false;
    kernels().logarithms(x.data(), out.data(), x.size());
    return true;
}

bool exponentials(std::span<const double> x, std::span<double> out) {
    if (out.size() != x.size()) return false;
    kernels().exponentials(x.data(), out.data(), x.size());
    return true;
}

bool sines_and_cosines(std::span<const double> angles, std::span<double> sines,
                       std::span<double> cosines) {
    if (sines.size() != angles.size() || cosines.size() != angles.size()) return false;
    constexpr std::size_t kBlock = 64;
    for (std::size_t start = 0; start < angles.size(); start += kBlock) {
        const std::size_t count = std::min(kBlock, angles.size() - start);
        const double* const x = &angles[start];
        bool small = true;
        for (std::size_t i = 0; i < count; ++i) small &= std::abs(x[i]) <= kLargestAngle;
        if (small) {
            kernels().sines_and_cosines(x, &sines[start], &cosines[start], count);
            continue;
        }
        for (std::size_t i = 0; i < count; ++i) {
            const double angle = x[i];
            sines[start + i] = std::sin(angle);
            cosines[start + i] = std::cos(angle);
        }
    }
    return true;
}

}  // namespace halvern::numerics
