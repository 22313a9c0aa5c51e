#include "items/trace_select.h"

#include <gmock/gmock.h>

#include <limits>

#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

// Records 1 to 3 of channels 1 and 2: what passes, as FFID * 10 + CHAN, negative where the polarity
// is reversed and 0 where the trace is killed.
struct Outcome {
    std::vector<int> passed;
    std::string log;
};
Outcome selected(const std::vector<std::string>& lines) {
    ItemBench<TraceSelect> bench({.samples = 1}, lines);
    Outcome outcome;
    for (int ffid = 1; ffid <= 3; ++ffid) {
        for (int chan = 1; chan <= 2; ++chan) {
            bench.set("FFID", ffid);
            bench.set("CHAN", chan);
            const auto out = bench.process({static_cast<float>(ffid * 10 + chan)});
            if (out.empty()) continue;
            outcome.passed.push_back(static_cast<int>(out[0]));
            EXPECT_EQ(bench.word("TRACEID") == 2, out[0] == 0);
        }
    }
    bench.finish();
    outcome.log = bench.log();
    return outcome;
}

TEST(TraceSelect, ActsOnTheTracesThatMatch) {
    TemporaryFolder folder;
    const std::string list =
        "LISTFILE=" + folder.write("edits",
                                   "# FFID CHAN reason action\n\n 2 0\n1 2 dead kill\n"
                                   "3,1,noisy,none\r\n3 2 reversed reverse\n");
    const struct {
        std::vector<std::string> lines;
        std::vector<int> expected;
    } kCases[] = {
        {{}, {11, 12, 21, 22, 31, 32}},
        {{"ACTION=1"}, {11, 12, 21, 22, 31, 32}},  // nothing says what to drop
        {{"SELECT=FFID,1,3"}, {11, 12, 31, 32}},
        {{"SELECT=FFID,1-3(2)", "SELECT=CHAN, 2"}, {12, 32}},
        {{"SELECT=FFID,3", "SELECT=CHAN,2", "MATCH=1"}, {12, 22, 31, 32}},
        {{"SELECT=FFID,2", "ACTION=1"}, {11, 12, 31, 32}},
        {{"SELECT=FFID,2", "ACTION=2"}, {11, 12, 0, 0, 31, 32}},
        {{"SELECT=FFID,2", "ACTION=3"}, {11, 12, -21, -22, 31, 32}},
        {{list}, {12, 21, 22}},
        {{list, "ACTION=3"}, {11, 12, -21, -22, 31, -32}},
        {{"EVERY=4"}, {11, 31}},
        {{"EVERY=2", "EVERYHEADER=FFID"}, {11, 12, 31, 32}},
        {{"EVERY=2", "EVERYHEADER=FFID", "SELECT=CHAN,1"}, {11, 31}},
    };
    for (const auto& [lines, expected] : kCases) {
        EXPECT_EQ(selected(lines).passed, expected) << testing::PrintToString(lines);
    }
    const std::string log = selected({"SELECT=FFID,1", "SELECT=CHAN,2", "MATCH=1"}).log;
    for (const char* line : {"Traces that match SELECT=FFID,1 = 2", "SELECT=CHAN,2 = 3",
                             "Traces passed = 4", "Traces dropped = 2"}) {
        EXPECT_THAT(log, HasSubstr(line));
    }
}

TEST(TraceSelect, DropsDeadAndBadTracesWhateverTheRowsSay) {
    ItemBench<TraceSelect> bench({.samples = 2},
                                 {"DROPDEAD=1", "DROPBAD=1", "SELECT=FFID,1", "ACTION=3"});
    bench.prepare();
    EXPECT_TRUE(bench.process({0, 0}).empty());
    EXPECT_TRUE(bench.process({1, std::numeric_limits<float>::quiet_NaN()}).empty());
    bench.set("TRACEID", 2);
    EXPECT_TRUE(bench.process({1, 1}).empty());
    EXPECT_EQ(bench.process({1, 0}).size(), 2u);
    bench.finish();
    for (const char* line : {"Dead traces dropped = 2", "that are not finite = 1",
                             "Traces passed = 1", "Traces dropped = 3"}) {
        EXPECT_THAT(bench.log(), HasSubstr(line));
    }
}

TEST(TraceSelect, RefusesWhatItCannotRead) {
    TemporaryFolder folder;
    const struct {
        std::string line;
        const char* words;
    } kCases[] = {
        {"SELECT=FFID", "no header word with ranges"},
        {"SELECT=FFID,", "no header word with ranges"},
        {"SELECT=FFID,1-x", "no header word with ranges"},
        {"SELECT=NOWORD,1", "Cannot read header 'NOWORD'"},
        {"SELECT=FFID," + std::string(200, '1'), "has been cut"},
        {"LISTFILE=" + folder.file("missing"), "Cannot read the list"},
        {"LISTFILE=" + folder.write("list", "1 2\nFFID CHAN\n"), "Line 2 of the list"},
        {"ACTION=4", "You have entered '0', '4'"},
    };
    for (const auto& [line, words] : kCases) {
        ItemBench<TraceSelect> bench({.samples = 1}, {line});
        EXPECT_JOB_ERROR(bench.prepare(), words) << line;
    }
}

}  // namespace
}  // namespace halvern
