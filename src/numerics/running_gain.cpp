#include "numerics/running_gain.h"

#include <cmath>

namespace halvern::numerics {

namespace {

constexpr std::size_t kBlock = 32;

// Independent of one another, so that the compiler takes several at a time.
void divide_by_roots(float* samples, const double* sums, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const auto root = static_cast<float>(std::sqrt(sums[i]));
        const bool live = root > 0;
        const float quotient = samples[i] / (live ? root : 1.0f);
        samples[i] = live ? quotient : samples[i];
    }
}

}  // namespace

bool running_gain(std::span<float> samples, std::size_t half_window, std::span<double> energies) {
    const std::size_t n = samples.size();
    const std::size_t h = half_window;
    if (energies.size() < n || h > n / 2) return false;
    for (std::size_t i = 0; i < n; ++i) energies[i] = double{samples[i]} * double{samples[i]};
    double sum = 0;
    for (std::size_t i = 0; i < h; ++i) sum += energies[i];

    // The chain of sums waits for one addition after the other. Meanwhile the processor takes the
    // roots and quotients of the block before, which depend on nothing and have left for memory.
    double sums[2][kBlock];
    bool odd = false;
    for (std::size_t start = 0; start < n; start += kBlock, odd = !odd) {
        double* const here = sums[odd];
        const std::size_t end = start + kBlock < n ? start + kBlock : n;
        const std::size_t rising = end < h ? end : h;
        const std::size_t full = end < n - h ? end : n - h;
        std::size_t j = start;
        for (; j < rising; ++j) {
            here[j - start] = sum;
            sum += energies[j + h];
        }
        for (; j < full; ++j) {
            here[j - start] = sum;
            sum -= energies[j - h];
            sum += energies[j + h];
        }
        for (; j < end; ++j) {
            here[j - start] = sum;
            sum -= energies[j - h];
        }
        if (start > 0) divide_by_roots(&samples[start - kBlock], sums[!odd], kBlock);
        if (end == n) divide_by_roots(&samples[start], here, end - start);
    }
    return true;
}

}  // namespace halvern::numerics
