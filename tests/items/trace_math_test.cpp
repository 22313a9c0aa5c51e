#include "items/trace_math.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(TraceMath, AddsAndThenNegates) {
    struct Case {
        std::vector<std::string> lines;
        std::vector<float> expected;
        const char* log;
    };
    for (const Case& math : {
             Case{{},
                  {2, -4, 0},
                  "Trace Math: Value to add  = 0.000000\nTrace Math: Reverse Trace = NO\n"},
             Case{{"SAMPLEVALADDED=1", "REVERSEON=1"},
                  {-3, 3, -1},
                  "Value to add  = 1.000000\nTrace Math: Reverse Trace = YES\n"},
             Case{{"SAMPLEVALADDED=-2.5"}, {-.5f, -6.5f, -2.5f}, "add  = -2.500000\n"},
             Case{{"REVERSEON=1"}, {-2, 4, 0}, "= YES\n"},
             Case{{"REVERSEON=2"}, {2, -4, 0}, "= NO\n"},
         }) {
        ItemBench<TraceMath> bench({.samples = 3}, math.lines);
        expect_near(bench.process({2, -4, 0}), math.expected, 0);
        EXPECT_THAT(bench.log(), HasSubstr(math.log));
    }
}

}  // namespace
}  // namespace halvern
