#include "items/normal_moveout.h"

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <random>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

std::vector<float> ramp(int samples) {
    std::vector<float> trace(static_cast<std::size_t>(samples));
    for (std::size_t i = 0; i < trace.size(); ++i) trace[i] = static_cast<float>(i + 10);
    return trace;
}

// Sampled at 1/64 s, which is exact in binary. With x/V of 3 samples the sample at i comes from
// sqrt(i² + 9): 3, 3.16, 3.61, 4.24, 5, 5.83, 6.71, 7.62; it is stretched by 1 / (the step to it
// from the time one sample earlier) - 1: -, 5.16, 1.26, 0.57, 0.32, 0.20, 0.14, 0.10.
constexpr BenchLine kBinary{.interval_us = 15625, .samples = 8};

struct Case {
    const char* name;
    const char* percent;
    const char* velocity;
    double offset;
    std::vector<float> expected;
};
class NormalMoveoutCurve : public testing::TestWithParam<Case> {};

TEST_P(NormalMoveoutCurve, ByHand) {
    ItemBench<NormalMoveout> bench(kBinary,
                                   {"MUTE_THRESH=" + std::string(GetParam().percent),
                                    "TIME_VEL=0," + std::string(GetParam().velocity) + ",5,7"});
    bench.set("OFFSET", GetParam().offset);
    EXPECT_EQ(bench.process(ramp(8)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Curves, NormalMoveoutCurve,
    testing::Values(
        Case{"NoMute", "0", "1024", 48, {13, 13, 13, 14, 15, 15, 16, 17}},
        Case{"NegativeIsNoMute", "-5", "1024", 48, {13, 13, 13, 14, 15, 15, 16, 17}},
        Case{"SignOfTheOffset", "0", "1024", -48, {13, 13, 13, 14, 15, 15, 16, 17}},
        Case{"ZeroOffset", "10", "1024", 0, {10, 11, 12, 13, 14, 15, 16, 17}},
        Case{"Mute", "50", "1024", 48, {0, 0, 0, 0, 15, 15, 16, 17}},
        Case{"MuteOfTheFirstStepTakesBoth", "200", "1024", 48, {0, 0, 13, 14, 15, 15, 16, 17}},
        Case{"MuteAboveEveryStretch", "600", "1024", 48, {13, 13, 13, 14, 15, 15, 16, 17}},
        Case{"BeyondTheEnd", "0", "1024", 100, {16, 16, 16, 16, 17, 0, 0, 0}},
        // 7.9 samples: sqrt(1 + 62.41) = 7.96, sqrt(4 + 62.41) = 8.15.
        Case{"MostBeyondTheEnd", "0", "640", 79, {17, 17, 0, 0, 0, 0, 0, 0}},
        // 7.95: sqrt(1 + 63.2) = 8.01. What is beyond the end is not muted, and the first stays.
        Case{"OnlyTheFirstInside", "1", "1280", 159, {17, 0, 0, 0, 0, 0, 0, 0}},
        Case{"AllBeyondTheEnd", "30", "1024", 2e9, {0, 0, 0, 0, 0, 0, 0, 0}}),
    [](const auto& c) { return std::string(c.param.name); });

// At i = 0 the sample is 64 x / V. With x = 100: 6.4 at 1000, 3.2 at 2000, 5.8 at 1100, 4.27 at
// 1500.
struct Place {
    int crossline, in_line;
    float first;
};
class NormalMoveoutPlace : public testing::TestWithParam<Place> {};

TEST_P(NormalMoveoutPlace, WeighsByInverseSquares) {
    ItemBench<NormalMoveout> bench(kBinary, {"TIME_VEL=0,1000,0,0", "TIME_VEL=0,2000,0,4",
                                             "TIME_VEL=0,100,0,8", "TIME_VEL=0,100,0,-3"});
    bench.set("OFFSET", 100);
    bench.set("XLINE", GetParam().crossline);
    bench.set("INLINE", GetParam().in_line);
    EXPECT_EQ(bench.process(ramp(8))[0], GetParam().first);
}

INSTANTIATE_TEST_SUITE_P(ByHand, NormalMoveoutPlace,
                         testing::Values(Place{0, 0, 16}, Place{0, 4, 13},  // exact
                                         Place{0, 1, 15},   // 0.9 of 1000 and 0.1 of 2000
                                         Place{0, 2, 14},   // halves
                                         Place{0, 7, 0}));  // 0.9 of 100: 73 samples late

// Every step as it reads, one trace at a time, with nothing kept from the trace before.
struct Entry {
    double time, velocity;
    int crossline, in_line;
};
std::vector<float> plain(const std::vector<Entry>& entries, double percent, double dt,
                         const std::vector<float>& in, double x, int c, int l) {
    std::vector<std::pair<int, int>> places;
    for (const Entry& e : entries) {
        const std::pair place(e.crossline, e.in_line);
        if (std::ranges::find(places, place) == places.end()) places.push_back(place);
    }
    const std::size_t n = in.size();
    std::vector<std::vector<double>> functions;
    for (const auto& place : places) {
        std::vector<Entry> own;
        for (const Entry& e : entries) {
            if (std::pair(e.crossline, e.in_line) == place) own.push_back(e);
        }
        std::vector<double> velocity(n);
        double t = 0;
        for (std::size_t i = 0, j = 0; i < n; ++i, t += dt) {
            if (j < own.size() && own[j].time == t) {
                velocity[i] = own[j++].velocity;
                continue;
            }
            while (j < own.size() && own[j].time < t) ++j;
            velocity[i] = j == 0 ? own[0].velocity
                          : j == own.size()
                              ? own.back().velocity
                              : own[j - 1].velocity +
                                    (own[j].velocity - own[j - 1].velocity) *
                                        ((t - own[j - 1].time) / (own[j].time - own[j - 1].time));
        }
        functions.push_back(velocity);
    }
    int slot[4] = {-1, -1, -1, -1};
    double weight[4] = {}, nearest[4] = {}, sum = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto [pc, pl] = places[i];
        const double d = (pc - c) * (pc - c) + (pl - l) * (pl - l);
        const int q = (pc < c ? 0 : 2) + (pl < l ? 0 : 1);
        if (slot[q] >= 0 && d >= nearest[q]) continue;
        slot[q] = static_cast<int>(i);
        nearest[q] = d;
    }
    if (slot[3] >= 0 && nearest[3] == 0) slot[0] = slot[1] = slot[2] = -1, nearest[3] = 1;
    for (int q = 0; q < 4; ++q) {
        if (slot[q] >= 0) sum += weight[q] = 1 / nearest[q];
    }
    std::vector<float> out(n);
    const double dts = dt / 1000;
    const double limit = percent / 100;
    double t0 = 0;
    for (std::size_t i = 0; i < n; ++i, t0 += dts) {
        double v = 0;
        for (int q = 0; q < 4; ++q) {
            if (slot[q] < 0) continue;
            v += weight[q] / sum * functions[static_cast<std::size_t>(slot[q])][i];
        }
        const double t = std::sqrt(t0 * t0 + x * x / (v * v));
        const double p = t / dts;
        if (p < 0 || p >= static_cast<double>(n)) continue;
        out[i] = in[static_cast<std::size_t>(p)];
        if (i < 1 || limit <= 0) continue;
        const double tp = std::sqrt((t0 - dts) * (t0 - dts) + x * x / (v * v));
        if (dts / (t - tp) - 1 < limit) continue;
        out[i] = 0;
        if (i == 1) out[0] = 0;
    }
    return out;
}

TEST(NormalMoveout, AgreesWithThePlainFormulationBitForBit) {
    std::mt19937 random(11);
    const auto number = [&random](int below) {
        return static_cast<int>(random() % static_cast<unsigned>(below));
    };
    for (const char* percent : {"0", "0.001", "40.5", "1000000"}) {
        std::vector<Entry> entries;
        std::vector<std::string> lines{"MUTE_THRESH=" + std::string(percent)};
        for (double time : {0.0, 101.0, 250.0, 250.0, 700.0, 1900.0}) {
            for (int place = 0; place < 12; ++place) {
                if (number(4) == 0) continue;  // some lack some times
                entries.push_back({time, 1400.0 + number(2000), place % 4 * 3, place / 4 * 5});
                const Entry& e = entries.back();
                lines.push_back("TIME_VEL=" + std::to_string(e.time) + "," +
                                std::to_string(e.velocity) + "," + std::to_string(e.crossline) +
                                "," + std::to_string(e.in_line));
            }
        }
        ItemBench<NormalMoveout> bench({.interval_us = 2000, .samples = 700}, lines);
        int differing = 0;
        for (int i = 0; i < 150; ++i) {
            std::vector<float> trace(700);
            for (float& sample : trace) sample = static_cast<float>(number(1 << 20) + 1);
            const int x = number(3000) - 1000;
            const int c = number(14) - 2;
            const int l = number(16) - 3;
            for (int again = 0; again < 1 + number(2); ++again) {  // twice at a place, often
                bench.set("OFFSET", x + again);
                bench.set("XLINE", c);
                bench.set("INLINE", l);
                differing += bench.process(trace) !=
                             plain(entries, std::stod(percent), 2, trace, x + again, c, l);
            }
        }
        EXPECT_EQ(differing, 0) << percent;
    }
}

TEST(NormalMoveout, RefusesATableOfWhichNothingCanBeMade) {
    const auto problem = [](std::vector<std::string> lines) {
        ItemBench<NormalMoveout> bench(kBinary, std::move(lines));
        return job_error_log([&] { bench.prepare(); });
    };
    EXPECT_THAT(problem({}), HasSubstr("There are no time/velocity pairs.  Enter at least one pair "
                                       "before running.\n"));
    EXPECT_THAT(
        problem({"TIME_VEL=0,1500,1,2", "TIME_VEL=8,0,1,2"}),
        HasSubstr("Pair #2 (crossline 1, inline 2, time 8.0, velocity 0.0) has no velocity"));
    EXPECT_THAT(problem({"TIME_VEL=0,-1,1,2"}), HasSubstr("Pair #1"));
    EXPECT_THAT(problem({"TIME_VEL=0,inf,1,2"}), HasSubstr("Pair #1"));
    EXPECT_THAT(problem({"TIME_VEL=nan,1500,1,2"}), HasSubstr("Pair #1"));
    // Times may start anew at every place, in any order of the places.
    EXPECT_THAT(problem({"TIME_VEL=8,1500,1,2", "TIME_VEL=0,1500,1,3", "TIME_VEL=8,1500,1,2",
                         "TIME_VEL=4,1500,1,2"}),
                HasSubstr("Pair #4 (crossline 1, inline 2, time 4.0, velocity 1500.0) is earlier"));
}

TEST(NormalMoveout, LogsWritesAndShowsItsTable) {
    ItemBench<NormalMoveout> bench(
        kBinary, {"TIME_VEL=4.5,1500,-3,20", "TIME_VEL=1,2,3", "MUTE_THRESH=12.34"});
    EXPECT_THAT(bench.log(),
                HasSubstr("Stretch Mute Percentage = 12.3\n"
                          "Normal Moveout (NMO): Pair# XLINE  INLINE --TIME-- VELOCITY\n"
                          "Normal Moveout (NMO):     1     -3     20      4.5   1500.0\n"));
    EXPECT_THAT(bench.log(), HasSubstr("The line 'TIME_VEL=1,2,3' is no time/velocity entry."));
    EXPECT_EQ(written(bench.item()), "$NMO\nMUTE_THRESH=12.340000\nTIME_VEL=4.5,1500.0,-3,20\n");
    const Rows sheet = sheet_of(bench.base_item());
    EXPECT_THAT(sheet.cells(),
                testing::ElementsAre(testing::ElementsAre("-3", "20", "4.5", "1500.0")));
    EXPECT_EQ(sheet.assign({{"1", "2", "3", "1e3"}}), "");
    EXPECT_THAT(written(bench.item()), HasSubstr("\nTIME_VEL=3.0,1000.0,1,2\n"));
}

}  // namespace
}  // namespace halvern
