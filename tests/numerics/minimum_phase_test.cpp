#include "numerics/minimum_phase.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "numerics/correlation.h"
#include "support/minimum_phase_steps.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

using Values = std::vector<double>;
TEST(MinimumPhaseInverse, FollowsItsDescription) {
    for (const std::size_t n : {4u, 64u, 512u}) {
        MinimumPhaseInverse plan = *MinimumPhaseInverse::make(static_cast<std::int64_t>(n));
        for (const std::size_t count : {std::size_t{1}, std::size_t{2}, n / 4, n / 2}) {
            const Values trace = noise(n / 2, n + count);
            Values lags(count), filter(n);
            correlate(trace, trace, lags);
            lags[0] *= 1.001;
            const std::vector<long double> expected =
                testing_support::minimum_phase_steps({lags.begin(), lags.end()}, n);
            ASSERT_TRUE(plan.design(lags, filter));
            // Against the first value, which with one lag, an amplitude alone, is the only one.
            for (std::size_t i = 0; i < n; ++i) {
                EXPECT_LE(std::abs(filter[i] - expected[i]), 1e-11L * std::abs(expected[0]))
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
