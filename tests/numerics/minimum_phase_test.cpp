#include "numerics/minimum_phase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <vector>

#include "numerics/correlation.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

using Values = std::vector<double>;
using Complex = std::complex<long double>;

// sum of x[j] exp(sign 2 pi i j k / n), for every k.
std::vector<Complex> transformed(const std::vector<Complex>& x, int sign) {
    const std::size_t n = x.size();
    std::vector<Complex> result(n);
    for (std::size_t k = 0; k < n; ++k) {
        for (std::size_t j = 0; j < n; ++j) {
            const long double turns =
                static_cast<long double>(j * k % n) / static_cast<long double>(n);
            result[k] +=
                x[j] * std::polar(1.0L, sign * 2 * std::numbers::pi_v<long double> * turns);
        }
    }
    return result;
}

// The description's four steps on whole complex spectra, with the transform's definition.
Values designed(const Values& lags, std::size_t n) {
    std::vector<Complex> x(n);
    for (std::size_t i = 0; i < lags.size(); ++i) x[i] = lags[i];
    for (std::size_t i = 2; i < lags.size(); ++i) x[n - i + 1] = lags[i];
    x = transformed(x, -1);
    for (Complex& bin : x) bin = std::log(std::max(std::abs(bin), 0x1p-1022L));
    x = transformed(x, 1);
    for (std::size_t i = 0; i < n; ++i) {
        const long double fold = i == 0 ? 1 : i <= n / 2 ? 2 : 0;
        x[i] = fold * x[i].real() / static_cast<long double>(n);
    }
    x = transformed(x, -1);
    for (Complex& bin : x) bin = std::polar(std::exp(-bin.real() / 2), -bin.imag());
    x = transformed(x, 1);
    Values filter;
    for (const Complex& value : x) {
        filter.push_back(static_cast<double>(value.real() / static_cast<long double>(n)));
    }
    return filter;
}

TEST(MinimumPhaseInverse, FollowsItsDescription) {
    for (const std::size_t n : {4u, 64u, 512u}) {
        MinimumPhaseInverse plan = *MinimumPhaseInverse::make(static_cast<std::int64_t>(n));
        for (const std::size_t count : {std::size_t{1}, std::size_t{2}, n / 4, n / 2}) {
            const Values trace = noise(n / 2, n + count);
            Values lags(count), filter(n);
            correlate(trace, trace, lags);
            lags[0] *= 1.001;
            const Values expected = designed(lags, n);
            ASSERT_TRUE(plan.design(lags, filter));
            // Against the first value, which with one lag, an amplitude alone, is the only one.
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_NEAR(filter[i], expected[i], 1e-11 * std::abs(expected[0]))
                    << n << " points, " << count << " lags, value " << i;
            }
        }
    }
}

// By hand: a spectrum of 16 everywhere has the cepstrum ln 16 at 0, and the filter is 1 / sqrt 16.
TEST(MinimumPhaseInverse, OfASpikeIsASpike) {
    MinimumPhaseInverse plan = *MinimumPhaseInverse::make(256);
    Values filter(4);
    ASSERT_TRUE(plan.design(Values{16}, filter));
    EXPECT_NEAR(filter[0], .25, 1e-15);
    for (std::size_t i = 1; i < 4; ++i) EXPECT_NEAR(filter[i], 0, 1e-15);
}

TEST(MinimumPhaseInverse, SurvivesSilenceAndRefusesWhatDoesNotFit) {
    EXPECT_FALSE(MinimumPhaseInverse::make(2));
    EXPECT_FALSE(MinimumPhaseInverse::make(100));
    MinimumPhaseInverse plan = *MinimumPhaseInverse::make(16);
    Values filter(4);
    ASSERT_TRUE(plan.design(Values{0, 0, 0}, filter));  // the root of 2.2e-308 is 2^-511
    EXPECT_NEAR(filter[0], 0x1p511, 0x1p511 * 1e-12);
    EXPECT_FALSE(plan.design({}, filter));
    EXPECT_FALSE(plan.design(Values(9), filter));
    Values whole(17);
    EXPECT_FALSE(plan.design(Values{1}, whole));
    ASSERT_TRUE(plan.design(Values{std::numeric_limits<double>::quiet_NaN()}, filter));
    EXPECT_TRUE(std::isnan(filter[0]));
}

}  // namespace
}  // namespace halvern::numerics
