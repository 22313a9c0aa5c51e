#include "items/linear_moveout.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

struct Case {
    const char* name;
    int time_shift;
    double offset;  // at a velocity of 1000: in milliseconds, too
    std::vector<float> expected;
};
class LinearMoveoutShift : public testing::TestWithParam<Case> {};

TEST_P(LinearMoveoutShift, ByHand) {
    ItemBench<LinearMoveout> bench(
        {.interval_us = 4000, .samples = 7},
        {"TIMESHIFT=" + std::to_string(GetParam().time_shift), "OFFSET_VEL=0,1000"});
    bench.set("OFFSET", GetParam().offset);
    EXPECT_EQ(bench.process({1, 2, 3, 4, 5, 6, 7}), GetParam().expected);
}

const std::vector<float> kZeros(7, 0.0f);
INSTANTIATE_TEST_SUITE_P(
    Shifts, LinearMoveoutShift,
    testing::Values(Case{"None", 0, 0, {1, 2, 3, 4, 5, 6, 7}},
                    Case{"Earlier", 0, 8, {3, 4, 5, 6, 7, 0, 0}},
                    Case{"HalvesRoundUp", 0, 10, {4, 5, 6, 7, 0, 0, 0}},
                    Case{"TimeShiftIsTakenOff", 4, 12, {3, 4, 5, 6, 7, 0, 0}},
                    Case{"ToTheLastSample", 0, 24, {7, 0, 0, 0, 0, 0, 0}},
                    Case{"ByTheWholeTrace", 0, 28, kZeros}, Case{"Beyond", 0, 32, kZeros},
                    Case{"LaterRepeatsTheStart", 12, 0, {0, 0, 0, 1, 2, 3, 1}},
                    Case{"NegativeHalvesRoundUp", 6, 0, {0, 1, 1, 1, 1, 1, 1}},
                    Case{"NegativeOffset", 0, -16, {0, 0, 0, 0, 1, 2, 3}},
                    Case{"LaterBeyond", 32, 0, kZeros},
                    Case{"Far", std::numeric_limits<int>::max(), -2e9, kZeros}),
    [](const auto& c) { return std::string(c.param.name); });

// The copy as it is meant: upward, one sample after the other, over its own results.
TEST(LinearMoveout, RepeatsAnyNumberOfSamples) {
    for (int later = 1; later <= 41; ++later) {
        ItemBench<LinearMoveout> bench({.interval_us = 1000, .samples = 41},
                                       {"TIMESHIFT=" + std::to_string(later), "OFFSET_VEL=0,1000"});
        std::vector<float> trace(41);
        for (std::size_t i = 0; i < trace.size(); ++i) trace[i] = static_cast<float>(i + 1);
        std::vector<float> expected = trace;
        const auto m = static_cast<std::size_t>(later);
        for (std::size_t j = m; j < expected.size(); ++j) expected[j] = expected[j - m];
        std::fill_n(expected.begin(), m, 0.0f);
        EXPECT_EQ(bench.process(trace), expected) << later;
    }
}

TEST(LinearMoveout, InterpolatesTheVelocity) {
    // 1500 m at 1500 m/s, halfway between 1000 and 2000: 1000 ms, less 992.
    ItemBench<LinearMoveout> bench(
        {.interval_us = 4000, .samples = 4},
        {"OFFSET_VEL=2000,2000", "TIMESHIFT=992", "OFFSET_VEL=1000,1000"});
    bench.set("OFFSET", 1500);
    EXPECT_EQ(bench.process({1, 2, 3, 4}), (std::vector<float>{3, 4, 0, 0}));
    EXPECT_THAT(bench.log(), HasSubstr("Linear Moveout (LMO): User Time Shift = 992\n"
                                       "Linear Moveout (LMO): Pair# -OFFSET- --VEL---\n"
                                       "Linear Moveout (LMO):     1   2000.0   2000.0\n"));
}

TEST(LinearMoveout, MovesBothSidesOfASplitSpreadEarlier) {
    ItemBench<LinearMoveout> bench({.interval_us = 4000, .samples = 4},
                                   {"OFFSET_VEL=-1000,-2000", "OFFSET_VEL=-1,-1000",
                                    "OFFSET_VEL=1,1000", "OFFSET_VEL=1000,2000"});
    const std::pair<double, std::vector<float>> kSides[] = {
        {-4, {2, 3, 4, 0}}, {0, {1, 2, 3, 4}}, {4, {2, 3, 4, 0}}};
    for (const auto& [offset, expected] : kSides) {
        bench.set("OFFSET", offset);
        EXPECT_EQ(bench.process({1, 2, 3, 4}), expected) << offset;
    }
}

TEST(LinearMoveout, RefusesWhatIsNoVelocity) {
    ItemBench<LinearMoveout> none({.interval_us = 4000, .samples = 4}, {});
    EXPECT_JOB_ERROR(none.prepare(),
                     "There are no offset/velocity pairs.  Enter at least one pair "
                     "before running.\n");
    for (const std::string velocity : {"0", "inf", "nan"}) {
        ItemBench<LinearMoveout> bench({.interval_us = 4000, .samples = 4},
                                       {"OFFSET_VEL=0,1500", "OFFSET_VEL=9," + velocity});
        EXPECT_JOB_ERROR(bench.prepare(), "Offset/Velocity Pair #2 (9.0, ");
    }
    EXPECT_EQ(none.base_item().WindowTexts().title, "LMO Parameters");
}

}  // namespace
}  // namespace halvern
