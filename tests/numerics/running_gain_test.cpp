#include "numerics/running_gain.h"

#include <gtest/gtest.h>

#include <cmath>

#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

#include "widths.h"

namespace halvern::numerics {
namespace {

// The samples one after the other, as the description reads: what the fast one must give bit for
// bit.
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

TEST(RunningGain, IsThePlainOneBitForBit) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
    struct Odd {
        const char* name;
        float value;
    };
    const Odd odds[] = {{"none", 1},          {"silence", 0},          {"huge", 3e38f},
                        {"denormal", 1e-42f}, {"infinite", kInfinity}, {"not a number", kNaN}};
    for (const std::size_t n : {0u, 1u, 2u, 3u, 17u, 64u, 255u, 1501u}) {
        for (const std::size_t h : {std::size_t{0}, std::size_t{1}, n / 5, n / 2}) {
            for (const Odd& odd : odds) {
                SCOPED_TRACE(testing::Message() << n << " samples, h " << h << ", " << odd.name);
                const std::vector<double> random = noise(n, n + h);
                std::vector<float> fast(random.begin(), random.end());
                for (std::size_t i = n / 3; i < n / 2; ++i) fast[i] = odd.value;
                std::vector<float> plain = fast;
                std::vector<double> energies(n);
                const bool fits = h <= n / 2;
                ASSERT_EQ(running_gain(fast, h, energies), fits);
                ASSERT_EQ(running_gain_plain(plain, h, energies), fits);
                const auto same = [](float a, float b) {
                    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
                };
                ASSERT_TRUE(std::ranges::equal(fast, plain, same));
            }
        }
    }
}

TEST(RunningGain, RefusesAWindowOrBufferThatDoesNotFit) {
    std::vector<float> samples{1, 2, 3, 4};
    std::vector<double> energies(4);
    EXPECT_FALSE(running_gain(samples, 3, energies));
    EXPECT_FALSE(running_gain(samples, 1, std::span(energies).first(3)));
    EXPECT_EQ(samples, (std::vector<float>{1, 2, 3, 4}));
}

}  // namespace
}  // namespace halvern::numerics
