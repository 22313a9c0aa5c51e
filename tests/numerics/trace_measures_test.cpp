#include "numerics/trace_measures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace halvern::numerics {
namespace {

TEST(TraceMeasures, OfAFewSamplesByHand) {
    const std::vector<float> window = {0, 3, -4, 0, -4, 1};
    EXPECT_DOUBLE_EQ(root_mean_square(window), std::sqrt(42.0 / 6));
    EXPECT_DOUBLE_EQ(mean_magnitude(window), 2);
    EXPECT_EQ(largest_magnitude(window).magnitude, 4);
    EXPECT_EQ(largest_magnitude(window).index, 2u);
    EXPECT_EQ(zero_crossings(window), 2);
    EXPECT_DOUBLE_EQ(decibels(10, 1), 20);
    for (const std::vector<float>& nothing : {std::vector<float>{}, std::vector<float>(5, 0.0f)}) {
        EXPECT_EQ(root_mean_square(nothing), 0);
        EXPECT_EQ(mean_magnitude(nothing), 0);
        EXPECT_EQ(largest_magnitude(nothing).magnitude, 0);
        EXPECT_EQ(zero_crossings(nothing), 0);
        EXPECT_FALSE(first_break(nothing, 1));
        EXPECT_EQ(SpectralMeasurer::make(5)->measure(nothing, 0.004).dominant_hz, 0);
    }
    EXPECT_EQ(decibels(1, 0), 0);
}

TEST(TraceMeasures, FindWhereAWaveSetsIn) {
    for (const float noise : {0.0f, 0.01f, 0.1f}) {
        std::vector<float> trace(400);
        for (std::size_t i = 0; i < trace.size(); ++i) {
            const auto x = static_cast<double>(i);
            trace[i] = noise * static_cast<float>(std::sin(x * x));  // as good as random
            if (i >= 150) trace[i] += static_cast<float>(std::cos(0.4 * (x - 150)));
        }
        const auto found = first_break(trace, 20);
        ASSERT_TRUE(found);
        EXPECT_EQ(*found, 150u) << noise;
    }
    EXPECT_FALSE(first_break(std::vector<float>(39, 1.0f), 20));
}

// A sine of 40 Hz in a long window: its peak, and, with another of the same power, the moments.
TEST(TraceMeasures, ReadThePowerSpectrum) {
    constexpr double kInterval = 0.002;
    auto measurer = SpectralMeasurer::make(1000);
    std::vector<float> one(1000), two(1000);
    for (std::size_t i = 0; i < one.size(); ++i) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(i) * kInterval;
        one[i] = static_cast<float>(std::sin(40.2 * angle));
        two[i] = static_cast<float>(std::sin(30 * angle) + std::sin(70 * angle + 1));
    }
    EXPECT_NEAR(measurer->measure(one, kInterval).dominant_hz, 40.2, 0.02);
    const SpectralMeasures measures = measurer->measure(two, kInterval);
    EXPECT_NEAR(measures.mean_hz, 50, 0.5);
    EXPECT_NEAR(measures.bandwidth_hz, 20, 0.5);
    // A shorter window than planned.
    EXPECT_NEAR(measurer->measure(std::span(one).first(300), kInterval).dominant_hz, 40.2, 0.2);
}

}  // namespace
}  // namespace halvern::numerics
