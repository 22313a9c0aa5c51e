#include "items/agc.h"

#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

// The window of sample j written as what it is: samples max(0, j-h) to min(n-1, j+h-1), summed anew
// for every sample instead of carried along.
std::vector<float> by_windows(const std::vector<float>& trace, int half) {
    const int n = static_cast<int>(trace.size());
    std::vector<float> out = trace;
    for (int j = 0; j < n; ++j) {
        double sum = 0;
        for (int i = std::max(0, j - half); i <= std::min(n - 1, j + half - 1); ++i) {
            sum += double{trace[static_cast<std::size_t>(i)]} * trace[static_cast<std::size_t>(i)];
        }
        const auto root = static_cast<float>(std::sqrt(sum));
        if (root > 0) out[static_cast<std::size_t>(j)] /= root;
    }
    return out;
}

struct Window {
    int ms, samples, half;
};
class AgcWindow : public testing::TestWithParam<Window> {};

TEST_P(AgcWindow, DividesByTheRootOfTheSummedEnergy) {
    const auto [ms, samples, half] = GetParam();
    std::vector<float> trace(static_cast<std::size_t>(samples));
    std::mt19937 random(7);
    for (float& sample : trace) sample = static_cast<float>(random() % 2001) - 1000.0f;
    ItemBench<Agc> bench({.interval_us = 2000, .samples = samples},
                         {"WINDOWSIZE=" + std::to_string(ms)});
    // Whole-number samples: every energy sum is exact, so only the last rounding can differ.
    expect_near(bench.process(trace), by_windows(trace, half), 1e-7f);
}

INSTANTIATE_TEST_SUITE_P(Lengths, AgcWindow,
                         testing::Values(Window{20, 40, 5}, Window{22, 40, 5},  // 11 works as 10
                                         Window{2, 9, 0}, Window{1, 9, 0},      // no window at all
                                         Window{500, 600, 125}, Window{502, 600, 125},
                                         Window{80, 40, 20}, Window{33554, 7, 3}));

// By hand, h = 2 on ones: windows of 2, 3, 4, 4, 4, 3 samples.
TEST(Agc, KeepsTheWindowLengthInTheGainAndLeavesZerosAlone) {
    ItemBench<Agc> bench({.interval_us = 4000, .samples = 6}, {"WINDOWSIZE=16"});
    expect_near(bench.process({1, 1, 1, 1, 1, 1}),
                {.70710678f, .57735027f, .5f, .5f, .5f, .57735027f}, 1e-7f);
    expect_near(bench.process({0, 0, 0, 0, 0, 0}), {0, 0, 0, 0, 0, 0}, 0);
    EXPECT_THAT(bench.log(), HasSubstr("AGC: Window Size = 16\n"));
    EXPECT_THAT(bench.log(), Not(HasSubstr("WARNING")));
}

TEST(Agc, ChecksTheWindow) {
    ItemBench<Agc> longer({.interval_us = 2000, .samples = 4}, {"WINDOWSIZE=10"});
    longer.process({1, 2, 3, 4});
    EXPECT_THAT(longer.log(), HasSubstr("*** WARNING in AGC: The window size is greater than the "
                                        "trace length.  It is being reduced"));
    ItemBench<Agc> zero({.interval_us = 2000, .samples = 4}, {"WINDOWSIZE=0"});
    EXPECT_JOB_ERROR(zero.prepare(),
                     "*** ERROR in AGC: The window size parameter must be greater "
                     "than or equal to 1.  You have entered '0'.\n");
    ItemBench<Agc> overflow({.interval_us = 2000, .samples = 4}, {"WINDOWSIZE=33555"});
    EXPECT_JOB_ERROR(overflow.prepare(), "greater than 33554.  You have entered '33555'");
}

}  // namespace
}  // namespace halvern
