#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "numerics/offset_table.h"
#include "numerics/spline.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

TEST(OffsetTable, ReadsBetweenAtAndBeyondItsEntries) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    struct Case {
        std::vector<double> offsets, values;
        double offset, expected;
    };
    const std::vector<double> o{-100, 300, 500}, v{0, 800, 200};
    const Case cases[] = {
        {o, v, -100, 0},
        {o, v, -4000, 0},
        {o, v, -kInfinity, 0},
        {o, v, 0, 200},
        {o, v, 300, 800},
        {o, v, 400, 500},
        {o, v, 500, 200},
        {o, v, 501, 200},
        {o, v, kInfinity, 200},
        {o, v, kNaN, 200},
        {{0, 1, 2}, {1e17, 1, 5}, 1, 1},  // where a difference of values would lose one
        {{50}, {7}, 49, 7},
        {{50}, {7}, 51, 7},
        // A step: up to 100 the first value, just after it the last.
        {{0, 100, 100, 200}, {1, 2, 4, 6}, 100, 2},
        {{0, 100, 100, 200}, {1, 2, 4, 6}, 150, 5},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(look_up(c.offsets, c.values, c.offset), c.expected) << "at " << c.offset;
    }
    EXPECT_TRUE(std::isnan(look_up({}, {}, 1)));
}

// The spline of a unit sample far from both ends decays by -(2 - sqrt 3) from node to node; its
// values half way follow from de Boor's cardinal B-splines: sum c[j] B(x - j) with
// c[j] = sqrt 3 (sqrt 3 - 2)^|j|, B(1/2) = 23/48, B(3/2) = 1/48.
TEST(Spline, OfAUnitSampleIsTheCardinalSpline) {
    constexpr std::size_t kLength = 201, kCentre = 100;
    std::vector<float> samples(kLength);
    samples[kCentre] = 1;
    std::vector<double> work(kLength);
    ASSERT_TRUE(shift_by_spline(samples, .5, work));
    const auto c = [](int j) { return std::sqrt(3.) * std::pow(std::sqrt(3.) - 2, std::abs(j)); };
    for (int j = -50; j < 50; ++j) {
        const double expected = (23 * (c(j) + c(j + 1)) + c(j - 1) + c(j + 2)) / 48;
        EXPECT_NEAR(samples[static_cast<std::size_t>(100 + j)], expected, 1e-7) << j;
    }
}

TEST(Spline, KeepsStraightLinesAndWholeShifts) {
    std::vector<float> line(40), values(40);
    std::vector<double> work(40);
    for (int i = 0; i < 40; ++i) line[static_cast<std::size_t>(i)] = static_cast<float>(3 * i - 7);
    ASSERT_TRUE(shift_by_spline(line, .25, work));
    for (int i = 0; i < 40; ++i) {
        EXPECT_NEAR(line[static_cast<std::size_t>(i)], 3 * (i + .25) - 7, 1e-5);
    }
    const std::vector<double> random = noise(40);
    values.assign(random.begin(), random.end());
    const std::vector<float> before = values;
    ASSERT_TRUE(shift_by_spline(values, 0, work));
    EXPECT_EQ(values, before);
    ASSERT_TRUE(shift_by_spline(values, 1, work));
    EXPECT_EQ(std::vector<float>(values.begin(), values.end() - 1),
              std::vector<float>(before.begin() + 1, before.end()));
}

TEST(Spline, RefusesAndShortTraces) {
    std::vector<double> work(2);
    std::vector<float> none, one{5}, two{1, 3}, three{1, 2, 3};
    EXPECT_TRUE(shift_by_spline(none, .5, work));
    EXPECT_TRUE(shift_by_spline(one, .5, work));
    EXPECT_EQ(one[0], 5);
    EXPECT_TRUE(shift_by_spline(two, .5, work));
    EXPECT_EQ(two, (std::vector<float>{2, 4}));
    EXPECT_FALSE(shift_by_spline(three, .5, work));
    for (const double fraction : {-.1, 1.1, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_FALSE(shift_by_spline(two, fraction, work));
    }
}

}  // namespace
}  // namespace halvern::numerics
