#include "numerics/moveout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "widths.h"

namespace halvern::numerics {
namespace {

// One sample at a time with the standard library's root, for counts that leave parts of registers.
TEST(Moveout, IsTheSameBitForBitInEveryWidth) {
    for (const Kernels* kernels : every_width()) {
        for (std::size_t n = 0; n < 70; ++n) {
            std::vector<double> times = noise(n, n + 1);
            std::vector<double> velocities = noise(n, n + 2);
            for (double& t : times) t = 3 * std::abs(t);
            for (double& v : velocities) v = 1 + std::abs(v);
            if (n > 5) velocities[4] = std::numeric_limits<double>::quiet_NaN();
            if (n > 5) times[5] = std::numeric_limits<double>::infinity();
            std::vector<double> moved(n);
            std::vector<std::int32_t> sources(n);
            kernels->moveout(times.data(), 0.7, velocities.data(), 0.03, moved.data(),
                             sources.data(), n);
            for (std::size_t i = 0; i < n; ++i) {
                const double time = std::sqrt(times[i] + 0.7 / velocities[i]);
                const double place = time / 0.03;
                const bool is_number = !std::isnan(time);
                EXPECT_EQ(is_number ? moved[i] : 0, is_number ? time : 0) << kernels->name;
                EXPECT_EQ(sources[i], place < static_cast<double>(n) ? static_cast<int>(place)
                                                                     : static_cast<int>(n))
                    << kernels->name << " " << i << " of " << n;
            }
        }
    }
}

// 3, 4 and 5: from 4 samples of time and 3 of moveout the sample comes from 5.
TEST(Moveout, FollowsTheHyperbola) {
    const double times[] = {0, 16, 0, 0, 0, 0};
    const double velocities[] = {1, 1, 4, .25, 9, 1e30};
    double moved[6];
    std::int32_t sources[6];
    ASSERT_TRUE(moveout(times, 9, velocities, 1, moved, sources));
    const double expected[] = {3, 5, 1.5, 6, 1, 3e-15};
    for (int i = 0; i < 6; ++i) EXPECT_DOUBLE_EQ(moved[i], expected[i]);
    const std::int32_t from[] = {3, 5, 1, 6, 1, 0};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(sources[i], from[i]);
    EXPECT_FALSE(moveout(times, 9, velocities, 1, std::span(moved).first(5), sources));
}

}  // namespace
}  // namespace halvern::numerics
