#pragma once

#include <cstdint>
#include <vector>

#include "numerics/kernels.h"

namespace halvern::numerics {

/// The kernels of every register width that this processor runs.
inline std::vector<const Kernels*> every_width() {
    std::vector<const Kernels*> all;
    for (const auto choice :
         {KernelChoice::kBaseline, KernelChoice::kAvx2, KernelChoice::kAvx512}) {
        if (const Kernels* kernels = kernels_of(choice)) all.push_back(kernels);
    }
    return all;
}

/// Numbers without pattern: a fixed sequence between -1 and 1 (Knuth's MMIX generator).
inline std::vector<double> noise(std::size_t count, std::uint64_t seed = 1) {
    std::vector<double> values(count);
    for (double& value : values) {
        seed = seed * 6364136223846793005u + 1442695040888963407u;
        value = static_cast<double>(static_cast<std::int64_t>(seed) >> 11) * 0x1p-52;
    }
    return values;
}

/// Whole numbers from -8 to 8, whose sums of products are exact in any order.
inline std::vector<double> whole_noise(std::size_t count, std::uint64_t seed = 1) {
    std::vector<double> values = noise(count, seed);
    for (double& value : values) value = static_cast<double>(static_cast<int>(value * 8.999));
    return values;
}

}  // namespace halvern::numerics
