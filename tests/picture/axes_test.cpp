#include "picture/axes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace halvern::picture {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

TEST(Ticks, AreRoundNumbersWithinTheRange) {
    struct Case {
        double low, high;
        int most;
        std::vector<double> expected;
    };
    const Case kCases[] = {
        {0, 10, 6, {0, 2, 4, 6, 8, 10}},           {0, 2396, 6, {0, 500, 1000, 1500, 2000}},
        {-1.2, 1.2, 5, {-1, -0.5, 0, 0.5, 1}},     {10, 0, 3, {0, 5, 10}},
        {6074232, 6074795, 4, {6074400, 6074600}}, {5, 5, 4, {}}};
    for (const auto& [low, high, most, expected] : kCases) {
        EXPECT_THAT(ticks_between(low, high, most), Pointwise(testing::DoubleNear(1e-9), expected))
            << low << ' ' << high;
    }
    EXPECT_EQ(tick_step(1, 2, 10, true), 1);
    EXPECT_TRUE(ticks_between(0, std::numeric_limits<double>::infinity(), 5).empty());
    EXPECT_LE(ticks_between(1e15, 1e15 + 1, 5).size(), 5u);
}

TEST(Ticks, HaveTheDecimalsThatTheirStepNeeds) {
    EXPECT_EQ(tick_text(1500, 500), "1500");
    EXPECT_EQ(tick_text(0.25, 0.05), "0.25");
    EXPECT_EQ(tick_text(-1e-17, 0.5), "0.0") << "no minus before zero";
    EXPECT_EQ(tick_text(3e8, 1e8), "3e+08");
}

}  // namespace
}  // namespace halvern::picture
