#include "geometry/trace_binning.h"

#include <gmock/gmock.h>

#include "foundation/debug_output.h"
#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

void send(ItemBench<TraceBinning>& bench, double x, double y) {
    bench.set("SRCX", x - 500);
    bench.set("SRCY", y + 100);
    bench.set("RECX", x + 500);
    bench.set("RECY", y - 100);
    bench.process({1});
}

struct Midpoint {
    const char* name;
    std::vector<std::string> grid;
    double x, y;
    int nline, xline, cdp, cdp_x, cdp_y;
    float bin_x, bin_y;
};
class BinningMidpoint : public testing::TestWithParam<Midpoint> {};

TEST_P(BinningMidpoint, FallsInABin) {
    const Midpoint& p = GetParam();
    ItemBench<TraceBinning> bench(kLine, p.grid);
    send(bench, p.x, p.y);
    EXPECT_EQ(bench.word("INLINE"), p.nline);
    EXPECT_EQ(bench.word("XLINE"), p.xline);
    EXPECT_EQ(bench.word("CDPN"), p.cdp);
    EXPECT_EQ(bench.word("CDPX"), p.cdp_x);
    EXPECT_EQ(bench.word("CDPY"), p.cdp_y);
    EXPECT_EQ(bench.word("BINX"), p.bin_x);
    EXPECT_EQ(bench.word("BINY"), p.bin_y);
}

// By hand. A bin is cut toward the origin, so the first one begins a bin before it.
INSTANTIATE_TEST_SUITE_P(
    ByHand, BinningMidpoint,
    testing::Values(
        Midpoint{"SecondInline", {}, 37, 12, 1, 0, 1002, 37, 12, 25, 0},
        Midpoint{"JustBeforeTheOrigin", {"NLINESTART=5"}, -10, 0, 5, 0, 1, -10, 0, 0, 0},
        Midpoint{"OnABoundary", {}, 50, 25, 2, 1, 2004, 50, 25, 50, 25},
        Midpoint{"Cdp101",
                 {"XLINESTART=1", "XLINEEND=100", "NLINESTART=1"},
                 30,
                 0,
                 2,
                 1,
                 101,
                 30,
                 0,
                 25,
                 0},
        Midpoint{"Increments",
                 {"XLINESTART=10", "XLINEEND=20", "XLINEINC=3", "NLINEINC=2", "XBINSIZE=12.5",
                  "YBINSIZE=50", "XORIGIN=1000", "YORIGIN=2000.5"},
                 // 40 / 12.5 is 3, 120 / 50 is 2; crosslines 10, 13, 16, 19 are 4.
                 1040,
                 2120,
                 6,
                 16,
                 3 * 4 + 1 + 2,
                 40,
                 119,
                 1037.5f,
                 2100.5f},
        // A quarter turn leads (x, y) to (-y, x).
        Midpoint{"QuarterTurn", {"ROTATION=90"}, 60, -30, 1, 2, 1001 + 1 + 2, 60, -30, 25, 50},
        // Beyond what single precision tells apart.
        Midpoint{"LargeOrigin",
                 {"YORIGIN=6312345.75", "YBINSIZE=0.5"},
                 0,
                 6312347,
                 0,
                 2,
                 3,
                 0,
                 1,
                 0,
                 6312346.75f}),
    [](const auto& midpoint) { return midpoint.param.name; });

TEST(TraceBinning, EndsTheJobOutsideTheGrid) {
    const std::vector<std::string> grid = {"XORIGIN=1000", "YORIGIN=1000", "XLINESTART=3",
                                           "XLINEEND=4",   "NLINESTART=7", "NLINEEND=9"};
    const struct {
        double x, y;
        const char *first, *second;
    } kCases[] = {
        {970, 1000, "Source 470.0/1100.0, Receiver 1470.0,900.0 - has an IN-LINE number of 6.\n",
         "The minimum IN-LINE number you entered in the prospect definition was 7.\n"},
        {1080, 1000, "has an IN-LINE number of 10.\n",
         "The maximum IN-LINE number you entered in the prospect definition was 9.\n"},
        {1000, 970, "has an CROSS-LINE number of 2.\n",
         "The minimum CROSS-LINE number you entered in the prospect definition was 3.\n"},
        {1000, 1060, "has an CROSS-LINE number of 5.\n",
         "The maximum CROSS-LINE number you entered in the prospect definition was 4.\n"},
        {1e9, 1000, "has an IN-LINE number of 39999967.\n", "The maximum IN-LINE number"},
    };
    for (const auto& c : kCases) {
        ItemBench<TraceBinning> bench(kLine, grid);
        const std::string log = job_error_log([&] { send(bench, c.x, c.y); });
        EXPECT_THAT(log, HasSubstr(c.first));
        EXPECT_THAT(log, HasSubstr(std::string("*** ERROR in Trace Binning: ") + c.second));
        EXPECT_THAT(log, HasSubstr("*** ERROR in Trace Binning: Expand the prospect definition to "
                                   "fit.\n"));
    }
}

TEST(TraceBinning, RefusesAGridThatIsNone) {
    for (const char* parameter : {"XBINSIZE=0", "YBINSIZE=nan", "XLINEINC=0", "NLINEINC=0",
                                  "XLINEEND=-1", "NLINESTART=1001"}) {
        ItemBench<TraceBinning> bench(kLine, {parameter});
        EXPECT_JOB_ERROR(bench.prepare(), "*** ERROR in Trace Binning: The ");
    }
}

TEST(TraceBinning, SaysWhatItUses) {
    ItemBench<TraceBinning> bench(kLine, {"XORIGIN=12.25"});
    EXPECT_THAT(bench.log(), HasSubstr("Trace Binning: X origin                   = 12.2\n"));
    std::FILE* debug = std::tmpfile();
    DebugOutput::UseStream(debug);
    send(bench, 40, 60);
    DebugOutput::UseStream(nullptr);
    EXPECT_THAT(bench.log(), HasSubstr("Trace Binning:   CDPN     - CDP ensemble number\n"));
    std::rewind(debug);
    char line[20] = "";
    EXPECT_TRUE(std::fgets(line, sizeof line, debug));
    EXPECT_STREQ(line, "5 - 1,2\n");
    std::fclose(debug);
}

}  // namespace
}  // namespace halvern
