#include "geometry/trace_binning.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ContainsRegex;
using testing::HasSubstr;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

void send(ItemBench<TraceBinning>& bench, double x, double y) {
    bench.set("SRCX", x - 500);
    bench.set("SRCY", y + 100);
    bench.set("RECX", x + 500);
    bench.set("RECY", y - 100);
    bench.process({1});
}

// By hand. A bin is cut toward the origin, so the first one begins a bin before it.
TEST(TraceBinning, AMidpointFallsInABin) {
    constexpr const char* kWords[] = {"INLINE", "XLINE", "CDPN", "CDPX", "CDPY", "BINX", "BINY"};
    const struct {
        std::vector<std::string> grid;
        double x, y, values[7];
    } kCases[] = {
        {{"NLINESTART=5"}, -10, 0, {5, 0, 1, -10, 0, 0, 0}},
        {{}, 50, 25, {2, 1, 2004, 50, 25, 50, 25}},
        // 40 / 12.5 is 3, 120 / 50 is 2; crosslines 10, 13, 16, 19 are 4.
        {{"XLINESTART=10", "XLINEEND=20", "XLINEINC=3", "NLINEINC=2", "XBINSIZE=12.5",
          "YBINSIZE=50", "XORIGIN=1000", "YORIGIN=2000.5"},
         1040,
         2120,
         {6, 16, 3 * 4 + 1 + 2, 40, 119, 1037.5, 2100.5}},
        // A quarter turn leads (x, y) to (-y, x).
        {{"ROTATION=90"}, 60, -30, {1, 2, 1001 + 1 + 2, 60, -30, 25, 50}},
        // Beyond what single precision tells apart.
        {{"YORIGIN=6312345.75", "YBINSIZE=0.5"}, 0, 6312347, {0, 2, 3, 0, 1, 0, 6312346.75f}},
    };
    for (const auto& c : kCases) {
        ItemBench<TraceBinning> bench(kLine, c.grid);
        send(bench, c.x, c.y);
        for (std::size_t i = 0; i < 7; ++i) {
            EXPECT_EQ(bench.word(kWords[i]), c.values[i]) << c.x << ", " << kWords[i];
        }
    }
}

TEST(TraceBinning, EndsTheJobOutsideTheGrid) {
    const struct {
        double x, y;
        const char *number, *limit;
    } kCases[] = {{970, 1000, "IN-LINE number of 6.\n", "minimum IN-LINE .* was 7\\."},
                  {1080, 1000, "IN-LINE number of 10.\n", "maximum IN-LINE .* was 9\\."},
                  {1000, 970, "CROSS-LINE number of 2.\n", "minimum CROSS-LINE .* was 3\\."},
                  {1000, 1060, "CROSS-LINE number of 5.\n", "maximum CROSS-LINE .* was 4\\."},
                  {1e9, 1000, "IN-LINE number of 39999967.\n", "maximum IN-LINE .* was 9\\."}};
    for (const auto& c : kCases) {
        ItemBench<TraceBinning> bench(kLine, {"XORIGIN=1000", "YORIGIN=1000", "XLINESTART=3",
                                              "XLINEEND=4", "NLINESTART=7", "NLINEEND=9"});
        const std::string log = job_error_log([&] { send(bench, c.x, c.y); });
        EXPECT_THAT(log, HasSubstr(c.number));
        EXPECT_THAT(log, ContainsRegex(c.limit));
    }
}

TEST(TraceBinning, RefusesAGridThatIsNone) {
    for (const char* parameter : {"XBINSIZE=0", "YBINSIZE=nan", "XLINEINC=0", "NLINEINC=0",
                                  "XLINEEND=-1", "NLINESTART=1001"}) {
        ItemBench<TraceBinning> bench(kLine, {parameter});
        EXPECT_JOB_ERROR(bench.prepare(), "*** ERROR in Trace Binning: The ");
    }
}

}  // namespace
}  // namespace halvern
