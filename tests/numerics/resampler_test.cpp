#include "numerics/resampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace halvern::numerics {
namespace {

// A sine of `share` of the Nyquist frequency of `interval`, sampled at `sampled`.
std::vector<float> sine(double share, double interval, double sampled, std::size_t samples) {
    std::vector<float> wave(samples);
    for (std::size_t i = 0; i < samples; ++i) {
        const double cycles = static_cast<double>(i) * sampled * share / (2 * interval);
        wave[i] = static_cast<float>(std::sin(2 * std::numbers::pi * cycles + 0.3));
    }
    return wave;
}

std::vector<float> resampled(const Resampler::Change& change, const std::vector<float>& in) {
    auto resampler = Resampler::make(change);
    EXPECT_TRUE(resampler);
    std::vector<float> out(static_cast<std::size_t>(resampler->outputs()));
    resampler->resample(in, out);
    return out;
}

struct Intervals {
    int before, after;  // microseconds
};

class Resampling : public testing::TestWithParam<Intervals> {
protected:
    static constexpr std::size_t kSamples = 1001;
    const int coarser_ = std::max(GetParam().before, GetParam().after);
    Resampler::Change change_{
        .samples = kSamples, .old_interval = GetParam().before, .new_interval = GetParam().after};
};

TEST_P(Resampling, KeepsWhatTheCoarserSamplingHolds) {
    // 0.9 of the corner, which is 0.8 of the coarser Nyquist frequency.
    const auto in = sine(0.72, coarser_, GetParam().before, kSamples);
    const auto out = resampled(change_, in);
    const auto expected = sine(0.72, coarser_, GetParam().after, out.size());
    EXPECT_EQ(out.size(), std::size_t(1000 * GetParam().before / GetParam().after) + 1);
    for (std::size_t i = out.size() / 4; i < out.size() * 3 / 4; ++i) {
        ASSERT_NEAR(out[i], expected[i], 1e-4) << i;
    }
}

TEST_P(Resampling, KeepsAConstantToItsEnds) {
    for (const float value : resampled(change_, std::vector<float>(kSamples, 2.5f))) {
        ASSERT_NEAR(value, 2.5f, 1e-6);
    }
}

TEST_P(Resampling, SuppressesWhatTheNewSamplingCannotHold) {
    if (GetParam().after <= GetParam().before) return;  // nothing is lost by refining
    const auto out = resampled(change_, sine(1.1, GetParam().after, GetParam().before, kSamples));
    for (std::size_t i = out.size() / 4; i < out.size() * 3 / 4; ++i) {
        ASSERT_LT(std::abs(out[i]), 1e-4f) << i;  // 80 dB
    }
}

INSTANTIATE_TEST_SUITE_P(ByInterval, Resampling,
                         testing::Values(Intervals{4000, 2000}, Intervals{2000, 4000},
                                         Intervals{4000, 3000}, Intervals{1000, 4000},
                                         Intervals{3001, 2003}, Intervals{2003, 3001}),
                         [](const auto& each) {
                             return std::to_string(each.param.before) + "To" +
                                    std::to_string(each.param.after);
                         });

TEST(Resampler, CopiesSamplesThatCoincide) {
    const auto in = sine(0.97, 4, 4, 300);
    for (const auto& [after, every] : {std::pair{2, 2}, std::pair{8, 1}, std::pair{3, 4}}) {
        const auto out = resampled(
            {.samples = 300, .old_interval = 4, .new_interval = after, .antialias = false}, in);
        for (std::size_t i = 0; i < out.size(); i += static_cast<std::size_t>(every)) {
            ASSERT_EQ(out[i], in[i * static_cast<std::size_t>(after) / 4]) << i;
        }
    }
}

TEST(Resampler, RefusesWhatItCannotDo) {
    for (const Resampler::Change& change : {
             Resampler::Change{.samples = 0, .old_interval = 1, .new_interval = 2},
             Resampler::Change{.samples = 9, .old_interval = 0, .new_interval = 2},
             Resampler::Change{.samples = 9, .old_interval = 1, .new_interval = -1},
             Resampler::Change{.samples = 9, .old_interval = 1, .new_interval = 2, .corner = 0},
             Resampler::Change{.samples = 9, .old_interval = 1, .new_interval = 2, .corner = 0.99},
             Resampler::Change{.samples = 9, .old_interval = 1, .new_interval = 1'000'000'000},
         }) {
        EXPECT_FALSE(Resampler::make(change));
    }
}

}  // namespace
}  // namespace halvern::numerics
