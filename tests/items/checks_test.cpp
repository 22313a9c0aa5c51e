// What several items ask of a line, of its header words and of their sheets, in the same words.
#include "flow/item_checks.h"

#include <gmock/gmock.h>

#include <fstream>

#include "items/agc.h"
#include "items/deconvolution.h"
#include "items/filter.h"
#include "items/linear_moveout.h"
#include "items/mute.h"
#include "items/normal_moveout.h"
#include "items/stack.h"
#include "items/time_shift.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;

using Lines = std::vector<std::string>;
using Make = std::unique_ptr<FlowItem> (*)(const Lines& lines);

template <class Item>
std::unique_ptr<FlowItem> make(const Lines& lines) {
    return std::make_unique<Item>(FlowSection{.lines = lines}, LogFlag::kQuiet);
}

// Reloads a bench's header description without one of its words.
void forget_word(ItemBenchBase& bench, const std::string& word) {
    const TemporaryFolder folder;
    std::ifstream installed(HALVERN_SOURCE_DIR "/header/default");
    std::string kept;
    for (std::string line; std::getline(installed, line);) {
        if (line.find(" " + word + " ") == std::string::npos) kept += line + "\n";
    }
    ASSERT_EQ(bench.definition().load(folder.write("header", kept)), 0);
    ASSERT_LT(bench.definition().find(word), 0);
}

const Lines kMute{"OFFSET_TIME=0,8"}, kLmo{"OFFSET_VEL=0,1500"}, kNmo{"TIME_VEL=0,1500,1,2"};

TEST(Checks, WhatTheLineOrItsHeaderLacksEndsTheJob) {
    const struct {
        Make make;
        Lines lines;
        std::string word;  // not in the header description, unless empty
        int interval_us = 4000;
    } kCases[] = {
        {make<LinearMoveout>, kLmo, "OFFSET"},
        {make<Mute>, kMute, "OFFSET"},
        {make<NormalMoveout>, kNmo, "OFFSET"},
        {make<NormalMoveout>, kNmo, "XLINE"},
        {make<NormalMoveout>, kNmo, "INLINE"},
        {make<Stack>, {"SORTED=1"}, "CDPN"},
        {make<Stack>, {"SORTED=1"}, "FOLD"},
        {make<TimeShift>, {"TYPE=1", "HEADER=STATICX"}, "STATICX"},
        {make<Agc>, {}, "", 0},
        {make<LinearMoveout>, kLmo, "", 0},
        {make<Mute>, kMute, "", 0},
        {make<NormalMoveout>, kNmo, "", 0},
        {make<Filter>, {}, "", 999},
        {make<Deconvolution>, {}, "", 999},
        {make<TimeShift>, {}, "", 999},
    };
    for (const auto& c : kCases) {
        ItemBenchBase bench({.interval_us = c.interval_us, .samples = 100},
                            [&] { return c.make(c.lines); });
        if (!c.word.empty()) forget_word(bench, c.word);
        const std::string words =
            !c.word.empty() ? "Cannot read header '" + c.word +
                                  "' from the trace header definition.\n"
                                  "Add it to the trace header definition and re-run.\n"
            : c.interval_us == 0 ? "The line has no sample interval.\n"
                                 : "The sample interval must be at least 1 millisecond.  The line "
                                   "has '999' microseconds.\n";
        EXPECT_JOB_ERROR(bench.prepare(),
                         std::string("*** ERROR in ") + bench.base_item().GetName() + ": " + words);
    }
}

// Said of the first of two traces, and not again.
TEST(Checks, WhatATraceMayMeanOtherwiseIsWarnedOfOnceARun) {
    const struct {
        Make make;
        Lines lines;
        const char* word;
        double value;
        std::string warning;  // empty: none
        int interval_us = 4000;
    } kCases[] = {
        {make<Mute>, kMute, "DELAY", 100, "A trace has a DELAY of 100 ms."},
        {make<LinearMoveout>, kLmo, "DELAY", -8, "A trace has a DELAY of -8 ms."},
        {make<NormalMoveout>, kNmo, "DELAY", 1, "A trace has a DELAY of 1 ms."},
        {make<Mute>, kMute, "OFFSET", -250, "A trace has the offset -250.0, and the table has no"},
        {make<LinearMoveout>, kLmo, "OFFSET", -1, "A trace has the offset -1.0, and the table"},
        {make<Mute>, {"OFFSET_TIME=-9,8", "OFFSET_TIME=9,8"}, "OFFSET", -250, ""},
        {make<NormalMoveout>, kNmo, "OFFSET", -250, ""},
        {make<Filter>,
         {},
         "CHAN",
         1,
         "The sample interval is 2.500 ms.  It is taken as 2 ms",
         2500},
        {make<Deconvolution>, {}, "CHAN", 1, "It is taken as 2 ms", 2500},
        {make<TimeShift>, {}, "CHAN", 1, "It is taken as 2 ms", 2500},
    };
    for (const auto& c : kCases) {
        ItemBenchBase bench({.interval_us = c.interval_us, .samples = 100},
                            [&] { return c.make(c.lines); });
        std::vector<float> trace(100);
        trace[20] = 1;
        for (int i = 0; i < 2; ++i) {
            bench.set(c.word, c.value);
            bench.process(trace);
        }
        const std::string log = bench.log();
        const std::size_t first = log.find("*** WARNING");
        EXPECT_EQ(first == log.npos, c.warning.empty()) << log;
        EXPECT_THAT(log, testing::HasSubstr(c.warning));
        EXPECT_EQ(log.find("*** WARNING", first + 1), log.npos) << log;
    }
}

TEST(Checks, ShortenedTracesThatLoseSamplesAreCounted) {
    ItemBench<TimeShift> bench({.samples = 4}, {});
    ShortenedTraces shortened;
    for (const auto& [stored, last] :
         {std::pair(2, 1.0f), std::pair(2, 0.0f), std::pair(4, 1.0f)}) {
        TraceSamples samples;
        samples.set_raw(std::vector<std::byte>(16), stored, 4, stored, SampleFormat::kIeee);
        shortened.look(samples, std::vector<float>{1, 1, 0, last});
    }
    shortened.report(bench.item());
    EXPECT_THAT(bench.log(), testing::HasSubstr("zeros = 1\n"));
}

// The file's order is time, velocity, crossline, inline; the window's begins with the places.
TEST(Checks, ALineOfATableIsRefusedOrDoubted) {
    const struct {
        const char* line;
        bool is_row;
        std::string doubt;
    } kCases[] = {
        {"500,2000,1,2", true, ""},
        {" 500 , +2000.5,1, 2 and text", true, ""},
        {"1,1,500,2000", true,
         "gives 1.0 for the time; a row is <time, ms>,<velocity, offset units a second>,"
         "<crossline>,<inline>"},
        {"500,2.1,1,2", true, "gives 2.1 for the velocity"},
        {"500,2000,1", false, ""},
        {"500,2000,1,2147483648", false, ""},
        {"500,2000,-2147483649,1", false, ""},
        {"500;2000,1,2", false, ""},
    };
    for (const auto& c : kCases) {
        const auto item = make<NormalMoveout>({});
        const Rows rows = sheet_of(*item);
        EXPECT_EQ(rows.read(c.line), c.is_row) << c.line;
        EXPECT_EQ(written(*item).find("TIME_VEL=") != std::string::npos, c.is_row) << c.line;
        EXPECT_THAT(rows.doubt(c.line), testing::StartsWith(c.doubt));
        EXPECT_EQ(rows.doubt(c.line).empty(), c.doubt.empty());
    }
}

TEST(Checks, ASheetThatCannotBeTakenSaysWhyAndChangesNothing) {
    const std::string half = " has at least one empty field and one non-empty field.\n";
    const std::string fix = "'.  Fix before accepting spreadsheet.";
    const struct {
        Make make;
        std::vector<Lines> cells;
        std::string message;
    } kCases[] = {
        {make<Mute>,
         {{"1", "2"}, {"", ""}, {"3", ""}},
         "Offset/Time Pair #3" + half + "Time = '', Offset = '3'"},
        {make<Mute>,
         {{"1x", "2"}},
         "Offset/Time Pair #1 has a bad number in the OFFSET field.\nOFFSET = '1x" + fix},
        {make<Mute>,
         {{"1x", "nan"}},
         "Offset/Time Pair #1 has a bad number in the TIME field.\nTIME = 'nan" + fix},
        {make<LinearMoveout>,
         {{"", "2"}},
         "Offset/Velocity Pair #1" + half + "Offset = '', Velocity = '2'"},
        {make<LinearMoveout>,
         {{"1x", "v"}},
         "Offset/Velocity Pair #1 has a bad number in the VELOCITY field.\nVELOCITY = 'v" + fix},
        {make<NormalMoveout>,
         {{"1", "", "3", "4"}},
         "Time/Velocity Pair #1" + half +
             "Crossline = '1', Inline = '', Time = '3', Velocity = '4'"},
        {make<NormalMoveout>,
         {{"1", "2.5", "3", "4"}},
         "Time/Velocity Pair #1 has a bad number in the INLINE field.\nINLINE = '2.5" + fix},
    };
    for (const auto& c : kCases) {
        const auto item = c.make({"OFFSET_TIME=1,2", "OFFSET_VEL=1,2", "TIME_VEL=1,2,3,4"});
        const std::string before = written(*item);
        EXPECT_EQ(sheet_of(*item).assign(c.cells), c.message);
        EXPECT_EQ(written(*item), before);
    }
}

}  // namespace
}  // namespace halvern
