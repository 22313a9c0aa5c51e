#include "geometry/merge_p1.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

// Sources 1001 and 1002 of line 17, a blank one, 1001 again on line 18; two streamers with two
// groups each at the first, one group at the second.
constexpr const char* kFile =
    "H0202TAPE VERSION               UKOOA-P1/90\n"
    "SLINE-17        11   1001565959.99N0023000.50E 531234.56312345.6  87.5123134501\n"
    "R   1 531100.06312300.0 8.0   2 531087.56312290.2 8.1                          1\n"
    "R   1 531101.06312200.0 8.0   2 531088.56312190.2 8.1                          2\n"
    "SLINE-17        11   1002                      531259.56312345.6      123134511\n"
    "R   1 531125.06312300.0                                                        1\n"
    "SLINE-17        11   1003                                        87.5123134521\n"
    "SLINE-18        11   1001                           9.0      8.0  87.5  1000003\n"
    "CLINE-17             5                             7.5      6.0\n"
    "EOF\n";

using Words = std::vector<std::pair<const char*, double>>;

struct Case {
    const char* name;
    std::vector<std::string> keys;
    Words before;
    Words after;  // empty: the trace is kept back
    const char* log = "";
};
class MergeP1Item : public testing::TestWithParam<Case> {};

TEST_P(MergeP1Item, WritesWhatTheFileSays) {
    const TemporaryFolder folder;
    std::vector<std::string> section = GetParam().keys;
    section.push_back("FILE=" + folder.write("p190", kFile));
    ItemBench<MergeP1> bench(kLine, section);
    for (const auto& [word, value] : GetParam().before) bench.set(word, value);
    bench.process({1});
    ASSERT_EQ(bench.passed().empty(), GetParam().after.empty());
    for (const auto& [word, value] : GetParam().after) EXPECT_EQ(bench.word(word), value) << word;
    bench.finish();
    EXPECT_THAT(bench.log(), HasSubstr(GetParam().log));
}

const Words kFirst = {{"SOUPOINT", 1001}, {"CHAN", 3}, {"SOULINE", 17}};
// Metres times ten; the third channel is the first group of the second streamer.
INSTANTIATE_TEST_SUITE_P(
    ByHand, MergeP1Item,
    testing::Values(
        Case{"CountsThroughStreamersThatBeginAgain",
             {},
             kFirst,
             {{"SRCX", 5312345},
              {"SRCY", 63123456},
              {"RECX", 5311010},
              {"RECY", 63122000},
              {"COORSCAL", -10},
              {"COORUNIT", 1},
              {"SWATDEP", 88},
              {"RECELEV", 0},
              {"OFFSET", 0}},
             "Channels are counted through"},
        Case{"Reversed", {"REVERSE=1"}, kFirst, {{"RECX", 5310885}}},
        Case{"StreamerAndGroup",
             {"STREAMERHEADER=RECLINE", "CABLEDEPTH=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 2}, {"RECLINE", 2}, {"ELEVSCAL", -10}},
             {{"RECX", 5310885}, {"SWATDEP", 875}, {"RECELEV", -81}}},
        Case{"GroupNumbersAlone",
             {"GROUPS=1"},
             kFirst,
             {},
             "Did not find the following RECEIVER coordinates:\n*** WARNING in Merge P1: 1001/3"},
        Case{"BlankDepthLeavesTheWord",
             {},
             {{"SOUPOINT", 1002}, {"CHAN", 1}, {"SWATDEP", 5}},
             {{"SRCX", 5312595}, {"SWATDEP", 5}}},
        Case{"BlankPosition",
             {},
             {{"SOUPOINT", 1003}, {"CHAN", 1}},
             {},
             "Did not find the following SOURCE coordinates:\n*** WARNING in Merge P1: 1003"},
        Case{"PassesWhatDoesNotMerge",
             {"KILLBAD=0"},
             {{"SOUPOINT", 1009}, {"SRCX", 4}},
             {{"SRCX", 4}, {"COORSCAL", 0}},
             "SOURCE coordinates:\n*** WARNING in Merge P1: 1009"},
        Case{"OtherPointWord",
             {"POINTHEADER=FFID"},
             {{"FFID", 1002}, {"CHAN", 1}},
             {{"SRCX", 5312595}}},
        Case{"ByLine",
             {"LINEHEADER=SOULINE"},
             {{"SOUPOINT", 1001}, {"SOULINE", 18}, {"CHAN", 1}},
             {},
             "RECEIVER coordinates"},
        Case{"LineOfNoSource",
             {"LINEHEADER=SOULINE"},
             {{"SOUPOINT", 1002}, {"SOULINE", 18}},
             {},
             "SOURCE coordinates:\n*** WARNING in Merge P1: 18/1002"},
        Case{"FirstOfEqualNumbers", {}, kFirst, {{"SRCX", 5312345}}, "1 sources have the number"},
        // 2 degrees 30 minutes 0.5 seconds; 56 degrees 59 minutes 59.99 seconds.
        Case{"Geographical",
             {"COORDINATES=1", "COORSCAL=-100"},
             {{"SOUPOINT", 1001}, {"RECX", 3}, {"COORSCAL", -100}},
             {{"SRCX", 900050}, {"SRCY", 20519999}, {"RECX", 3}, {"COORUNIT", 2}},
             "only sources are written"},
        Case{"OtherCoordinatesAreTold",
             {},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"CDPX", 3}},
             {{"CDPX", 3}},
             "1 traces have another coordinate"},
        Case{"MidPoints",
             {"MIDPOINTS=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"CDPN", 5}},
             {{"CDPX", 75}, {"CDPY", 60}}},
        Case{"NoMidPoint",
             {"MIDPOINTS=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"CDPN", 6}},
             {},
             "MID-POINT coordinates:\n*** WARNING in Merge P1: 6"},
        Case{"CoarseScalar",
             {"COORSCAL=10"},
             kFirst,
             {{"SRCX", 53123}, {"COORSCAL", 10}},
             "too coarse"},
        // 5,312,345,000 is beyond 32 bits.
        Case{"TooFine",
             {"COORSCAL=-10000"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"SRCX", 4}},
             {{"SRCX", 4}},
             "4 values did not fit"},
        Case{"TimeAgrees",
             {"TIMECHECK=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"TIME", 123134506}},
             {{"SRCX", 5312345}}},
        Case{"TimeDiffers",
             {"TIMECHECK=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}, {"TIME", 123134507}},
             {},
             "not those of the file"},
        Case{"ClockIsShifted",
             {"TIMECHECK=2", "TIMESHIFT=-3600", "TOLERANCE=0"},
             {{"SOUPOINT", 1001},
              {"CHAN", 1},
              {"DTIME", 123},
              {"HTIME", 12},
              {"MTIME", 45},
              {"STIME", 1}},
             {{"SRCX", 5312345}}},
        // Three seconds past new year, on the trace's clock two before it.
        Case{"AcrossNewYear",
             {"TIMECHECK=1", "LINEHEADER=SOULINE"},
             {{"SOUPOINT", 1001}, {"SOULINE", 18}, {"CHAN", 1}, {"TIME", 365235958}},
             {},
             "RECEIVER coordinates"},
        Case{"NoTimeIsNotChecked",
             {"TIMECHECK=1"},
             {{"SOUPOINT", 1001}, {"CHAN", 1}},
             {{"SRCX", 5312345}},
             "1 traces were not checked"}),
    [](const auto& row) { return row.param.name; });

TEST(MergeP1, EndsTheJobOnWhatItCannotUse) {
    const TemporaryFolder folder;
    const std::string file = "FILE=" + folder.write("p190", kFile);
    const std::pair<std::vector<std::string>, const char*> kCases[] = {
        {{"FILE=no/file"}, "P1 file 'no/file' does not exist.\n"},
        {{"FILE=" + folder.write("empty", "H\n")}, "it holds no position record"},
        {{file, "POINTHEADER=NONE"}, "Cannot read header 'NONE'"},
        {{file, "CHANHEADER=NOSUCH"}, "Cannot read header 'NOSUCH'"},
        {{file, "COORSCAL=40000"}, "You have entered '40000'"},
        {{file, "COORDINATES=2"}, "COORDINATES must be 0 to 1.  You have entered '2'"},
        {{file, "MIDPOINTS=2"}, "has no bin centres"},
        {{file, "TOLERANCE=-1"}, "The time tolerance must not be negative"},
    };
    for (const auto& [section, words] : kCases) {
        ItemBench<MergeP1> bench(kLine, section);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
    ItemBench<MergeP1> unused(kLine, {file});
    unused.finish();  // no trace came
    EXPECT_THAT(unused.log(), Not(HasSubstr("WARNING")));
}

}  // namespace
}  // namespace halvern
