#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <span>
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

TEST(FunctionKernels, IsWithinTwoUnitsOfTheExtendedFunctions) {
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

TEST(FunctionKernels, TakesTheEndsOfTheRange) {
    struct Case {
        double x, expected;
    };
    const Case exponentials[] = {{0, 1},          {-0., 1},         {kInfinity, kInfinity},
                                 {-kInfinity, 0}, {800, kInfinity}, {-800, 0},
                                 {kNaN, kNaN}};
    const Case logarithms[] = {{1, 0},     {0, -kInfinity},        {-0., -kInfinity},
                               {-1, kNaN}, {kInfinity, kInfinity}, {kNaN, kNaN}};
    const auto check = [](auto function, std::span<const Case> cases) {
        for (const Case& c : cases) {
            double value = c.x;
            function(&value, &value, 1);
            EXPECT_TRUE(value == c.expected || (std::isnan(value) && std::isnan(c.expected)))
                << c.x << " gives " << value;
        }
    };
    for (const Kernels* width : every_width()) {
        SCOPED_TRACE(width->name);
        check(width->exponentials, exponentials);
        check(width->logarithms, logarithms);
        // Denormal, with a last place of 2^-1074: exp(-740) and 2^-1060.
        double value = -740;
        width->exponentials(&value, &value, 1);
        EXPECT_NEAR(value * 0x1p1000 * 0x1p60, std::exp(-740 + 1060 * std::log(2.)), 0x1p-15);
        value = 0x1p-1060;
        width->logarithms(&value, &value, 1);
        EXPECT_NEAR(value, -1060 * std::log(2.), 1e-12);
        double sine = 7, cosine = 7;
        value = 0;
        EXPECT_TRUE(width->sines_and_cosines(&value, &sine, &cosine, 1));
        EXPECT_EQ(sine, 0);
        EXPECT_EQ(cosine, 1);
        for (const double angle : {1e300, -1.1e5, kInfinity, kNaN}) {
            EXPECT_FALSE(width->sines_and_cosines(&angle, &sine, &cosine, 1)) << angle;
        }
    }
}

TEST(FunctionKernels, IsTheSameAtEveryWidthAndLength) {
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
