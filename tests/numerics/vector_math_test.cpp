#include "numerics/vector_math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "widths.h"

namespace halvern::numerics {
namespace {

using Values = std::vector<double>;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Arguments over the whole range, dense where the functions bend most.
Values arguments(double reach) {
    Values x;
    for (const double value : noise(3001)) {
        x.push_back(value * reach);
        x.push_back(value * 2);
        x.push_back(value * std::exp2(-20 * std::abs(value)));
    }
    return x;
}

// The distance in units of the last place of the exact value.
double units(double value, long double exact) {
    const double place = std::nextafter(std::abs(static_cast<double>(exact)), kInfinity) -
                         std::abs(static_cast<double>(exact));
    return static_cast<double>(std::abs(value - exact)) / place;
}

TEST(VectorMath, IsWithinTwoUnitsOfTheExtendedFunctions) {
    for (const Kernels* width : every_width()) {
        SCOPED_TRACE(width->name);
        Values x = arguments(708);
        Values out(x.size()), cosines(x.size());
        width->exponentials(x.data(), out.data(), x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_LT(units(out[i], std::exp(static_cast<long double>(x[i]))), 2) << x[i];
        }
        x = out;  // from 1e-307 to 1e307, and close to 1
        width->logarithms(x.data(), out.data(), x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_LT(units(out[i], std::log(static_cast<long double>(x[i]))), 2) << x[i];
        }
        x = arguments(9e4);
        width->sines_and_cosines(x.data(), out.data(), cosines.data(), x.size());
        for (std::size_t i = 0; i < x.size(); ++i) {
            ASSERT_LT(units(out[i], std::sin(static_cast<long double>(x[i]))), 2) << x[i];
            ASSERT_LT(units(cosines[i], std::cos(static_cast<long double>(x[i]))), 2) << x[i];
        }
    }
}

TEST(VectorMath, TakesTheEndsOfTheRange) {
    struct Case {
        double x, expected;
    };
    const auto check = [](auto function, const std::vector<Case>& cases) {
        for (const Case& c : cases) {
            Values value{c.x};
            ASSERT_TRUE(function(value, value));
            if (std::isnan(c.expected)) {
                EXPECT_TRUE(std::isnan(value[0])) << c.x;
            } else {
                EXPECT_EQ(value[0], c.expected) << c.x;
            }
        }
    };
    check(exponentials, {{0, 1},
                         {-0., 1},
                         {kInfinity, kInfinity},
                         {-kInfinity, 0},
                         {800, kInfinity},
                         {-800, 0},
                         {kNaN, kNaN}});
    check(logarithms, {{1, 0},
                       {0, -kInfinity},
                       {-0., -kInfinity},
                       {-1, kNaN},
                       {kInfinity, kInfinity},
                       {kNaN, kNaN}});
    // Denormal, with a last place of 2^-1074: exp(-740) and 2^-1060.
    Values value{-740};
    ASSERT_TRUE(exponentials(value, value));
    EXPECT_NEAR(value[0] * 0x1p1000 * 0x1p60, std::exp(-740 + 1060 * std::log(2.)), 0x1p-15);
    value = {0x1p-1060};
    ASSERT_TRUE(logarithms(value, value));
    EXPECT_NEAR(value[0], -1060 * std::log(2.), 1e-12);

    Values angles{1e300, kInfinity, 0}, sines(3), cosines(3);
    ASSERT_TRUE(sines_and_cosines(angles, sines, cosines));
    EXPECT_EQ(sines[0], std::sin(1e300));
    EXPECT_TRUE(std::isnan(sines[1]) && std::isnan(cosines[1]));
    EXPECT_EQ(sines[2], 0);
    EXPECT_EQ(cosines[2], 1);
    EXPECT_FALSE(sines_and_cosines(angles, sines, value));
    EXPECT_FALSE(exponentials(angles, value));
}

TEST(VectorMath, IsTheSameAtEveryWidthAndLength) {
    const Values x = arguments(100);
    Values whole[4], part[4];
    for (const Kernels* width : every_width()) {
        for (const std::size_t count : {x.size(), std::size_t{1}, std::size_t{7}}) {
            for (Values& out : part) out.assign(count, -99);
            width->exponentials(x.data(), part[0].data(), count);
            width->logarithms(part[0].data(), part[1].data(), count);
            width->sines_and_cosines(x.data(), part[2].data(), part[3].data(), count);
            for (std::size_t f = 0; f < 4; ++f) {
                if (whole[f].empty()) whole[f] = part[f];
                EXPECT_TRUE(std::equal(part[f].begin(), part[f].end(), whole[f].begin()));
            }
        }
    }
}

}  // namespace
}  // namespace halvern::numerics
