#include "numerics/vector_math.h"

#include <algorithm>
#include <array>
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
    constexpr std::size_t kBlock = 256;
    for (std::size_t start = 0; start < angles.size(); start += kBlock) {
        const std::size_t count = std::min(kBlock, angles.size() - start);
        const auto block = angles.subspan(start, count);
        std::array<double, kBlock> given;  // the results may replace the angles
        std::ranges::copy(block, given.begin());
        if (kernels().sines_and_cosines(block.data(), &sines[start], &cosines[start], count)) {
            continue;
        }
        for (std::size_t i = 0; i < count; ++i) {
            sines[start + i] = std::sin(given[i]);
            cosines[start + i] = std::cos(given[i]);
        }
    }
    return true;
}

}  // namespace halvern::numerics
