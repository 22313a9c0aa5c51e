#include "numerics/running_gain.h"

#include <cmath>

#include "numerics/kernels.h"

namespace halvern::numerics {

bool running_gain(std::span<float> samples, std::size_t half_window, std::span<double> energies) {
    if (energies.size() < samples.size() || half_window > samples.size() / 2) return false;
    kernels().running_gain(samples.data(), samples.size(), half_window, energies.data());
    return true;
}

bool running_gain_plain(std::span<float> samples, std::size_t half_window,
                        std::span<double> energies) {
    const std::size_t n = samples.size();
    const std::size_t h = half_window;
    if (energies.size() < n || h > n / 2) return false;
    for (std::size_t i = 0; i < n; ++i) energies[i] = double{samples[i]} * double{samples[i]};
    double sum = 0;
    for (std::size_t i = 0; i < h; ++i) sum += energies[i];
    for (std::size_t j = 0; j < n; ++j) {
        const auto root = static_cast<float>(std::sqrt(sum));
        if (root > 0) samples[j] /= root;
        if (j >= h) sum -= energies[j - h];
        if (j + h < n) sum += energies[j + h];
    }
    return true;
}

}  // namespace halvern::numerics
