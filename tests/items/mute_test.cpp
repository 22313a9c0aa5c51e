#include "items/mute.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

struct Case {
    std::vector<std::string> pairs;  // OFFSET_TIME lines' values
    int interval_us;
    double offset;
    int zeros;  // by hand, of 60 samples
};
class MuteTable : public testing::TestWithParam<Case> {};

TEST_P(MuteTable, ZeroesTheStart) {
    const Case& c = GetParam();
    std::vector<std::string> lines;
    for (const std::string& pair : c.pairs) lines.push_back("OFFSET_TIME=" + pair);
    ItemBench<Mute> bench({.interval_us = c.interval_us, .samples = 60}, lines);
    bench.set("OFFSET", c.offset);
    std::vector<float> expected(60, 2.5f);
    std::fill_n(expected.begin(), c.zeros, 0.0f);
    EXPECT_EQ(bench.process(std::vector<float>(60, 2.5f)), expected);
    EXPECT_FALSE(bench.log().find("ERROR") != std::string::npos);
}

const std::vector<std::string> kRising{"1000,200", "0,100", "500,120"};  // not in order
INSTANTIATE_TEST_SUITE_P(
    ByHand, MuteTable,
    testing::Values(Case{{"300,99"}, 2000, 7, 50},  // floor(49.5 + 0.5)
                    Case{{"300,98.9"}, 2000, 9000, 49}, Case{{"300,99"}, 500, 0, 60},
                    Case{{"0,1.25"}, 500, 0, 3},  // 2.5 samples of half a millisecond
                    Case{kRising, 4000, -20, 25}, Case{kRising, 4000, 0, 25},
                    Case{kRising, 4000, 250, 28},  // 110 ms are 27.5 samples
                    Case{kRising, 4000, 500, 30}, Case{kRising, 4000, 750, 40},
                    Case{kRising, 4000, 1000, 50}, Case{kRising, 4000, 1e6, 50},
                    Case{{"-100,8", "100,16"}, 4000, -100, 2},  // the sign counts
                    Case{{"-100,8", "100,16"}, 4000, 0, 3}, Case{{"0,-50"}, 4000, 0, 0},
                    Case{{"0,1e300"}, 4000, 0, 60}));

TEST(Mute, NeedsATable) {
    ItemBench<Mute> none({.interval_us = 4000, .samples = 4}, {"OFFSET_TIME=7"});
    EXPECT_JOB_ERROR(none.prepare(),
                     "*** ERROR in Mute: There are no offset/time pairs.  Enter at least one pair "
                     "before running.\n");
    EXPECT_THAT(none.log(), HasSubstr("WARNING in Mute: The line 'OFFSET_TIME=7' is no"));
    ItemBench<Mute> infinite({.interval_us = 4000, .samples = 4},
                             {"OFFSET_TIME=0,8", "OFFSET_TIME=10,inf"});
    EXPECT_JOB_ERROR(infinite.prepare(), "Offset/Time Pair #2 (10.0, inf) is not finite.");
}

TEST(Mute, LogsAndWritesItsPairs) {
    ItemBench<Mute> bench({.interval_us = 4000, .samples = 4},
                          {"OFFSET_TIME=1000.25,200", "OFFSET_TIME=-5,12.34"});
    EXPECT_EQ(bench.log(),
              "Mute: Initializing Flow Item\nMute: Pair# -OFFSET- --TIME--\n"
              "Mute:     1   1000.2    200.0\nMute:     2     -5.0     12.3\n");
    EXPECT_EQ(written(bench.item()), "$MUTE\nOFFSET_TIME=1000.2,200.0\nOFFSET_TIME=-5.0,12.3\n");
    bench.prepare();
    EXPECT_THAT(bench.log(), HasSubstr("Mute: The following SEG-Y trace headers are used on INPUT "
                                       "and are expected to be valid:\nMute: OFFSET   - Source to "
                                       "receiver offset\n"));
}

TEST(Mute, ShowsItsPairsAsASheet) {
    ItemBench<Mute> bench({.interval_us = 4000, .samples = 4}, {"OFFSET_TIME=1,2"});
    const Rows sheet = sheet_of(bench.item());
    EXPECT_THAT(sheet.columns, ElementsAre(testing::StrEq("Offset"), testing::StrEq("Time")));
    EXPECT_THAT(sheet.cells(), ElementsAre(ElementsAre("1.0", "2.0")));
    EXPECT_EQ(sheet.assign({{"", ""}, {" -7.5 ", "+2e1"}}), "");
    EXPECT_EQ(written(bench.item()), "$MUTE\nOFFSET_TIME=-7.5,20.0\n");
}

// The pair at 0 and 100 ms and the one at 1000 and 200 ms: at 500 they give 150 ms, 37.5 samples.
TEST(MuteFiles, GiveTheTableAsAFlowOrAsColumns) {
    TemporaryFolder folder;
    for (const char* text :
         {"0,100\n1000,200\n", "# far\r\n\r\nOFFSET_TIME=0,100\r\n1000.0, 200.0",
          "OFFSET TIME\n0 100\n1000\t200\n", "time, offset\n200,1000\n100,0\n"}) {
        ItemBench<Mute> bench({.interval_us = 4000, .samples = 60},
                              {"FILE=" + folder.write("mute.txt", text)});
        bench.set("OFFSET", 500);
        const auto muted = bench.process(std::vector<float>(60, 1));
        EXPECT_EQ(std::ranges::count(muted, 0.0f), 38) << text;
        EXPECT_THAT(written(bench.item()), HasSubstr("FILE=" + folder.file("mute.txt") + "\n"));
    }
    ItemBench<Mute> typed({.samples = 60}, {"OFFSET_TIME=0,100"});
    EXPECT_EQ(written(typed.item()), "$MUTE\nOFFSET_TIME=0.0,100.0\n");
}

TEST(MuteFiles, EndTheJobWhereTheyAreNoTable) {
    TemporaryFolder folder;
    const struct {
        std::string text;
        const char* words;
    } kCases[] = {
        {"", "There are no offset/time pairs"},
        {"0,100\n1000\n", "line 2 is no offset/time pair"},
        {"OFFSET DEPTH\n0 100\n", "line 1 is no offset/time pair"},
        {"OFFSET TIME\n0 100 7\n", "line 2 is no offset/time pair"},
        {"OFFSET TIME\n0 1OO\n", "line 2 is no offset/time pair"},
    };
    for (const auto& [text, words] : kCases) {
        ItemBench<Mute> bench({.samples = 60}, {"FILE=" + folder.write("mute.txt", text)});
        EXPECT_JOB_ERROR(bench.prepare(), words) << text;
    }
    ItemBench<Mute> missing({.samples = 60}, {"FILE=" + folder.file("missing")});
    EXPECT_JOB_ERROR(missing.prepare(), "Cannot read the table file");
    ItemBench<Mute> both({.samples = 60}, {"FILE=" + folder.file("mute.txt"), "OFFSET_TIME=0,100"});
    EXPECT_JOB_ERROR(both.prepare(), "Both a table and the table file");
}

}  // namespace
}  // namespace halvern
