// What several items ask of a line, of its header words and of their sheets, in the same words.
#include "items/checks.h"

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
