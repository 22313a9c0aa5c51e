#include "numerics/convolver.h"

#include <gtest/gtest.h>

#include "widths.h"

namespace halvern::numerics {
namespace {

TEST(Convolver, GivesTheSumsThroughTheSpectrum) {
    struct Lengths {
        std::size_t samples, filter, out;
    };
    for (const auto& [samples, filter, count] :
         {Lengths{1, 1, 1}, Lengths{100, 7, 100}, Lengths{64, 65, 60}, Lengths{3, 9, 3}}) {
        const std::vector<double> a = whole_noise(samples), b = whole_noise(filter, 2);
        auto plan =
            Convolver::make(static_cast<std::int64_t>(samples), static_cast<std::int64_t>(filter),
                            Convolver::Method::kSpectral);
        ASSERT_TRUE(plan);
        EXPECT_TRUE(plan->spectral());
        std::vector<double> out(count);
        ASSERT_TRUE(plan->convolve(a, b, out));
        for (std::size_t i = 0; i < count; ++i) {
            double sum = 0;
            for (std::size_t j = 0; j < filter && j <= i; ++j) sum += b[j] * a[i - j];
            EXPECT_NEAR(out[i], sum, 1e-11) << i;  // of terms to 64, in doubles
        }
    }
}

// 100 zeros, 50 live samples, 60 zeros, one live sample, 89 zeros; a filter of 40.
TEST(Convolver, IsZeroWhereTheFilterReachesNoLiveSample) {
    std::vector<double> samples(300);
    std::ranges::copy(whole_noise(50), samples.begin() + 100);
    samples[100] = samples[149] = samples[210] = 3;
    auto plan = Convolver::make(300, 40, Convolver::Method::kSpectral);
    std::vector<double> out(300);
    ASSERT_TRUE(plan->convolve(samples, whole_noise(40, 2), out));
    for (std::size_t i = 0; i < out.size(); ++i) {
        const bool reached = (i >= 100 && i < 149 + 40) || (i >= 210 && i < 210 + 40);
        if (reached) continue;
        EXPECT_EQ(out[i], 0) << i;
    }
    EXPECT_NE(out[188], 0);
    EXPECT_NE(out[210], 0);
}

TEST(Convolver, TakesTheFasterWayAndRefusesWhatIsLongerThanPlanned) {
    EXPECT_FALSE(Convolver::make(0, 5));
    EXPECT_FALSE(Convolver::make(5, 0));
    EXPECT_FALSE(Convolver::make(1500, 48)->spectral());
    EXPECT_TRUE(Convolver::make(6000, 3000)->spectral());
    auto plan = Convolver::make(4, 2);
    std::vector<double> four(4), five(5), out(4);
    EXPECT_FALSE(plan->convolve(five, out, out));
    EXPECT_FALSE(plan->convolve(four, five, out));
    EXPECT_FALSE(plan->convolve(four, std::span(four).first(2), five));
}

}  // namespace
}  // namespace halvern::numerics
