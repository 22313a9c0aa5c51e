#include "items/time_shift.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

struct Shift {
    const char* name;
    std::vector<std::string> lines;
    std::vector<float> trace, expected;  // at 4 ms
};
class TimeShiftBy : public testing::TestWithParam<Shift> {};

TEST_P(TimeShiftBy, MovesTheSamples) {
    const Shift& shift = GetParam();
    ItemBench<TimeShift> bench(
        {.interval_us = 4000, .samples = static_cast<int>(shift.trace.size())}, shift.lines);
    bench.set("OFFSET", -8);
    expect_near(bench.process(shift.trace), shift.expected, 1e-6f);
}

// By hand. Through 0 1 0 the natural spline has curvatures 0 -3 0: between the samples it is
// 1/2 + 3/16, and after the last one its slope is -1 - 3/6. Through 0 0 1 they are 0 3/2 0.
INSTANTIATE_TEST_SUITE_P(
    ByHand, TimeShiftBy,
    testing::Values(
        Shift{"Later", {"AMOUNT=8"}, {1, 2, 3, 4, 5}, {0, 0, 1, 2, 3}},
        Shift{"Earlier", {"AMOUNT=-4"}, {1, 2, 3, 4, 5}, {2, 3, 4, 5, 0}},
        Shift{"NotAtAll", {"AMOUNT=0"}, {1, 2, 3}, {1, 2, 3}},
        Shift{"AllButOneSample", {"AMOUNT=-16"}, {1, 2, 3, 4, 5}, {5, 0, 0, 0, 0}},
        Shift{"ByTheTrace", {"AMOUNT=12"}, {1, 2, 3}, {0, 0, 0}},
        Shift{"ByMoreThanTheTrace", {"AMOUNT=2147483647"}, {1, 2, 3}, {0, 0, 0}},
        Shift{"ByTheSmallestInteger", {"AMOUNT=-2147483648"}, {1, 2, 3}, {0, 0, 0}},
        Shift{"InstalledIs25Earlier",
              {},
              {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14,
               15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27},
              {26, 27, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
        Shift{"ByAHeaderWord", {"TYPE=1", "HEADER=OFFSET", "AMOUNT=4"}, {1, 2, 3}, {3, 0, 0}},
        Shift{"RoundedDown", {"AMOUNT=-5", "INTERPON=0"}, {1, 2, 3}, {2, 3, 0}},
        Shift{"HalfASampleEarlierIsOne", {"AMOUNT=-2", "INTERPON=0"}, {1, 2, 3}, {2, 3, 0}},
        Shift{"HalfASampleLaterIsNone", {"AMOUNT=2", "INTERPON=0"}, {1, 2, 3}, {1, 2, 3}},
        Shift{"MoreThanHalfASampleLater", {"AMOUNT=3", "INTERPON=0"}, {1, 2, 3}, {0, 1, 2}},
        Shift{"SplinedEarlier", {"AMOUNT=-2"}, {0, 1, 0}, {.6875f, .6875f, -.75f}},
        Shift{"SplinedLater", {"AMOUNT=2"}, {0, 1, 0}, {-.09375f, .40625f, 1.625f}},
        Shift{"SplinedNothing", {"AMOUNT=-102"}, {0, 1, 0}, {0, 0, 0}}),
    [](const auto& shift) { return shift.param.name; });

// The spline runs on into zeros by 13 of them, to where a float beside a live sample is all.
TEST(TimeShift, LeavesExactZerosBesideAMute) {
    ItemBench<TimeShift> bench({.interval_us = 4000, .samples = 100}, {"AMOUNT=-2"});
    std::vector<float> trace(100);
    trace[50] = trace[51] = 1000;
    const std::vector<float> shifted = bench.process(trace);
    for (std::size_t i = 0; i < shifted.size(); ++i) {
        EXPECT_EQ(shifted[i] != 0, i >= 50 - 14 && i <= 51 + 13) << i;
    }
}

TEST(TimeShift, LogsItsParametersAndFractionsOfALaterShift) {
    ItemBench<TimeShift> bench({.interval_us = 4000, .samples = 3}, {"AMOUNT=5"});
    bench.process({1, 2, 3});
    EXPECT_THAT(bench.log(),
                HasSubstr("Time Shift: Shift time = 5\nTime Shift: Shift header = NONE\n"
                          "Time Shift: Trace values will be interpolated.\n"));
    EXPECT_THAT(bench.log(), HasSubstr("offSet = 3.000000, shiftIndex = -2, shiftAmount = -5\n"));
    ItemBench<TimeShift> earlier({.interval_us = 4000, .samples = 3}, {"AMOUNT=-5", "INTERPON=7"});
    earlier.process({1, 2, 3});
    EXPECT_THAT(earlier.log(), HasSubstr("Trace values will NOT be interpolated.\n"));
    EXPECT_THAT(earlier.log(), Not(HasSubstr("offSet")));
}

TEST(TimeShift, RoundsTheShiftOfTracesThatAreNotFinite) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    ItemBench<TimeShift> bench({.interval_us = 4000, .samples = 3}, {"AMOUNT=-5"});
    EXPECT_THAT(bench.process({1, kInfinity, 3}), testing::ElementsAre(kInfinity, 3, 0));
    bench.finish();
    EXPECT_THAT(bench.log(),
                HasSubstr("*** WARNING in Time Shift: Traces with samples that are not "
                          "finite, shifted by whole samples = 1\n"));
}

}  // namespace
}  // namespace halvern
