// What the items that write coordinates say of traces with a coordinate scalar.
#include <gmock/gmock.h>

#include "geometry/ascii_input.h"
#include "geometry/merge_sps.h"
#include "geometry/trace_binning.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;

template <class Item>
std::string log_of(const std::vector<std::string>& lines, double scalar) {
    ItemBench<Item> bench({.interval_us = 4000, .samples = 1}, lines);
    for (int i = 0; i < 2; ++i) {
        bench.set("COORSCAL", scalar);
        bench.process({1});
    }
    return bench.log();
}

TEST(CoordinateScalar, IsWarnedOfOnceARunWhereCoordinatesAreWritten) {
    const TemporaryFolder folder;
    const std::string file = "FILENAME=" + folder.write("columns", "   0   5\n");
    const std::vector<std::string> update = {file, "MATCHHEADER=0 FFID 1 4", "DATAHEADER=SRCX 5 8"};
    const std::vector<std::string> other = {file, "MATCHHEADER=0 FFID 1 4", "DATAHEADER=CHAN 5 8"};
    const std::vector<std::string> sps = {
        "SOURCEFILE=" + folder.write("s",
                                     "S3                    1012    -8 6.5   0 9 310   1000.0"
                                     "    2000.0 -12.0173134501\n"),
        "RECEIVERFILE=" + folder.write("r",
                                       "R4                    5011     7 0.0   0 520.5   1400.0"
                                       "    2300.0  33.0  0     0\n"),
        "RELATIONFILE=" + folder.write("x",
                                       "X1        7003                    1012   1   404"
                                       "                    501     5041\n"),
        "KILLBAD=0"};
    const struct {
        std::string log;
        int warnings;
    } kCases[] = {{log_of<TraceBinning>({}, -100), 1}, {log_of<TraceBinning>({}, 10), 1},
                  {log_of<TraceBinning>({}, 0), 0},    {log_of<TraceBinning>({}, 1), 0},
                  {log_of<MergeSps>(sps, -100), 1},    {log_of<AsciiInput>(update, -100), 1},
                  {log_of<AsciiInput>(other, -100), 0}};
    for (const auto& [log, warnings] : kCases) {
        const std::size_t first = log.find("A trace has the coordinate scalar");
        EXPECT_EQ(first != log.npos, warnings == 1) << log;
        EXPECT_EQ(log.find("coordinate scalar", first + 30), log.npos) << log;
    }
    EXPECT_THAT(kCases[0].log, testing::HasSubstr("other readers divide them by 100.\n"));
    EXPECT_THAT(kCases[1].log, testing::HasSubstr("other readers multiply them by 10.\n"));
}

}  // namespace
}  // namespace halvern
