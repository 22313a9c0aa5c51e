#include "items/filter.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using std::numbers::pi;
using testing::HasSubstr;
using testing::Not;

std::vector<std::string> corners(const std::array<const char*, 4>& hz) {
    std::vector<std::string> lines;
    for (int i = 0; i < 4; ++i) lines.push_back("FREQ" + std::to_string(i + 1) + "=" + hz[i]);
    return lines;
}

// A wave of so many periods a trace comes out times the trapezoid, its phase as it was.
struct Gain {
    int bin;
    double gain;
};
struct Waves {
    const char* name;
    int interval_us, samples;
    std::vector<std::string> lines;
    std::vector<Gain> gains;
};
class FilterWaves : public testing::TestWithParam<Waves> {};

TEST_P(FilterWaves, ComeOutTimesTheTrapezoid) {
    const Waves& waves = GetParam();
    ItemBench<Filter> bench({.interval_us = waves.interval_us, .samples = waves.samples},
                            waves.lines);
    for (const auto& [bin, gain] : waves.gains) {
        SCOPED_TRACE(testing::Message() << "bin " << bin);
        std::vector<float> trace, expected;
        for (int i = 0; i < waves.samples; ++i) {
            const double wave = std::cos(2 * pi * bin * i / waves.samples + 0.3);
            trace.push_back(static_cast<float>(wave));
            expected.push_back(static_cast<float>(gain * wave));
        }
        expect_near(bench.process(trace), expected, 2e-6f);
    }
    EXPECT_THAT(bench.log(), Not(HasSubstr("WARNING in Filter: Freq")));
}

// By hand. At 2 ms 64 samples give bins of 7.8125 Hz, and the corners are bins 4, 8, 16, 20: on the
// ramps a quarter of the way is (1 - root 1/2) / 2. The installed corners at 4 ms and 1024 samples
// are bins 20, 41, 328, 369: the first step up is sin^2(pi / 42), the first one down cos^2(pi /
// 82).
INSTANTIATE_TEST_SUITE_P(
    ByHand, FilterWaves,
    testing::Values(Waves{"Ramps",
                          2000,
                          64,
                          corners({"31.25", "62.5", "125", "156.25"}),
                          {{0, 0},
                           {1, 0},
                           {3, 0},
                           {4, 0},
                           {5, .1464466},
                           {6, .5},
                           {7, .8535534},
                           {8, 1},
                           {12, 1},
                           {16, 1},
                           {17, .8535534},
                           {18, .5},
                           {20, 0},
                           {21, 0},
                           {31, 0},
                           {32, 0}}},
                    Waves{"FromZeroOn",
                          2000,
                          64,
                          corners({"0", "0", "250", "250"}),
                          {{0, 0}, {1, 1}, {31, 1}, {32, 0}}},
                    Waves{"AllAtNyquist",
                          2000,
                          64,
                          corners({"250", "250", "250", "250"}),
                          {{0, 0}, {1, 0}, {31, 0}, {32, 0}}},
                    Waves{"FractionOfAMillisecondDropped",
                          2500,
                          64,
                          corners({"31.25", "31.25", "125", "125"}),
                          {{3, 0}, {4, 1}, {16, 1}, {17, 0}}},
                    Waves{"Installed",
                          4000,
                          1024,
                          {},
                          {{20, 0}, {21, .0055845}, {41, 1}, {328, 1}, {329, .9985328}, {369, 0}}}),
    [](const auto& waves) { return waves.param.name; });

// The filter as what it does in time: a circular convolution, over the next power of two, with the
// sum of the cosines that it lets through.
class FilterTraces : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(FilterTraces, AreConvolvedInACircle) {
    const auto [samples, circle] = GetParam();
    // 10, 20, 60, 80 Hz in bins of 1000 / (4 circle) Hz.
    const auto bin = [n = circle](double hz) { return std::floor(hz * 0.004 * n + 0.5); };
    std::vector<double> response(static_cast<std::size_t>(circle));
    for (int k = 1; k < circle / 2; ++k) {
        const double up = std::clamp((k - bin(10)) / (bin(20) - bin(10)), 0.0, 1.0);
        const double down = std::clamp((bin(80) - k) / (bin(80) - bin(60)), 0.0, 1.0);
        const double gain = std::pow(std::sin(pi / 2 * up) * std::sin(pi / 2 * down), 2);
        for (int i = 0; i < circle; ++i) {
            response[static_cast<std::size_t>(i)] +=
                2 * gain * std::cos(2 * pi * k * i / circle) / circle;
        }
    }
    std::mt19937 random(3);
    std::vector<float> trace(static_cast<std::size_t>(samples));
    for (float& sample : trace) sample = static_cast<float>(random() % 2001) - 1000.0f;
    std::vector<float> expected;
    for (int i = 0; i < samples; ++i) {
        double sum = 0;
        for (int j = 0; j < samples; ++j) {
            sum += trace[static_cast<std::size_t>(j)] *
                   response[static_cast<std::size_t>((i - j + circle) % circle)];
        }
        expected.push_back(static_cast<float>(sum));
    }
    ItemBench<Filter> bench({.interval_us = 4000, .samples = samples},
                            corners({"10", "20", "60", "80"}));
    expect_near(bench.process(trace), expected, 2e-4f);  // of amplitudes to 1000, in floats
}

INSTANTIATE_TEST_SUITE_P(Lengths, FilterTraces,
                         testing::Values(std::pair{50, 64}, std::pair{64, 64}, std::pair{65, 128},
                                         std::pair{300, 512}));

TEST(Filter, CorrectsCornersWithWarnings) {
    ItemBench<Filter> bench({.interval_us = 2000, .samples = 64},
                            corners({"-3", "-0.5", "300", "301.25"}));
    bench.prepare();
    EXPECT_THAT(bench.log(),
                HasSubstr("Filter: Frequency 1 = -3.0\nFilter: Frequency 2 = -0.5\n"
                          "Filter: Frequency 3 = 300.0\nFilter: Frequency 4 = 301.2\n"));
    EXPECT_THAT(
        bench.log(),
        HasSubstr(
            "*** WARNING in Filter: Frequency 1 should be >= 0.  You entered '-3.0'.  It has been "
            "set to 0.\n"
            "*** WARNING in Filter: Frequency 2 should be >= 0.  You entered '-0.5'.  It has been "
            "set to 0.\n"
            "*** WARNING in Filter: Frequency 3 should be < 250.0.  You entered '300.0'.  It has "
            "been set to 250.0.\n"
            "*** WARNING in Filter: Frequency 4 should be < 250.0.  You entered '301.2'.  It has "
            "been set to 250.0.\n"));
    EXPECT_THAT(bench.process(std::vector<float>(64, 1.0f)),
                testing::Each(testing::FloatNear(0, 1e-6f)));
}

TEST(Filter, EndsTheJobOnWhatItCannotUse) {
    struct Case {
        int interval_us, samples;
        std::array<const char*, 4> hz;
        const char* words;
    };
    for (const Case& bad : {
             Case{2000,
                  64,
                  {"8", "5", "3", "1"},
                  "*** ERROR in Filter: Frequency 2 should be >= frequency 1.  You entered "
                  "1='8.0', 2='5.0'.\n"},
             Case{2000,
                  64,
                  {"5", "10", "8", "9"},
                  "Frequency 3 should be >= frequency 2.  You entered 2='8.0', 3='8.0'.\n"},
             Case{2000,
                  64,
                  {"5", "10", "80", "70"},
                  "Frequency 4 should be >= frequency 3.  You entered 3='80.0', 4='70.0'.\n"},
             Case{2000,
                  1,
                  {"5", "10", "80", "90"},
                  "A trace needs at least 2 samples to be filtered.  The line has '1'.\n"},
         }) {
        ItemBench<Filter> bench({.interval_us = bad.interval_us, .samples = bad.samples},
                                corners(bad.hz));
        EXPECT_JOB_ERROR(bench.prepare(), bad.words);
    }
}

TEST(Filter, PassesTracesThatAreNotFiniteUnfiltered) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    ItemBench<Filter> bench({.interval_us = 2000, .samples = 4}, {});
    for (const float bad : {kInfinity, -kInfinity}) {
        EXPECT_THAT(bench.process({1, bad, kInfinity, 3}),
                    testing::ElementsAre(1, bad, kInfinity, 3));
    }
    bench.finish();
    EXPECT_THAT(bench.log(), HasSubstr("*** WARNING in Filter: Traces with samples that are not "
                                       "finite, passed on unfiltered = 2\n"));
}

}  // namespace
}  // namespace halvern
