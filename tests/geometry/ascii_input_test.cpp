#include "geometry/ascii_input.h"

#include <gmock/gmock.h>

#include "foundation/system_paths.h"
#include "geometry/ascii_traces.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

class AsciiInputItem : public testing::Test {
protected:
    /// The item's lines, with a file of this text.
    std::vector<std::string> lines(const std::string& text, std::vector<std::string> more) {
        more.push_back("FILENAME=" + folder.write("columns", text));
        return more;
    }
    TemporaryFolder folder;
};

TEST_F(AsciiInputItem, UpdatesFromTheRecordThatMatches) {
    ItemBench<AsciiInput> bench(
        kLine, lines("header\nFFID CHAN    SRCX\n"
                     "   2    1    20.7  0.5\r\n   1    2    -9.5  2.5\n   1    1    11.2  1.5",
                     {"STARTRECORD=2", "MATCHHEADER=5 CHAN 6 9", "MATCHHEADER=0 FFID 1 4",
                      "DATAHEADER=SRCX 10 17", "DATAHEADER=TEMP 19 22"}));
    // Channel 9 of file 1 is left out: two records fit it, and either is right.
    const double traces[][4] = {{2, 1, 21, .5}, {1, 1, 11, 1.5}, {3, 1, 77, 0}, {2, 0, 77, 0}};
    for (const auto& [ffid, chan, srcx, temp] : traces) {
        bench.set("FFID", ffid);
        bench.set("CHAN", chan);
        bench.set("SRCX", 77);
        bench.process({1});
        EXPECT_EQ(bench.word("SRCX"), srcx) << ffid;
        EXPECT_EQ(bench.word("TEMP"), temp) << ffid;
    }
    EXPECT_EQ(bench.item().matched(), 2);
}

// S lines complete no record. What they hold belongs to the record that the next R line completes.
TEST_F(AsciiInputItem, NonTraceLinesAddToTheNextRecord) {
    const std::string text = "S   100\nR   201\nR   202\nS   300\n";
    // The second line comes from a flow file with CR LF, of which the CR belongs to no key.
    std::vector<std::string> section = {"DATAHEADER=SRCX 2 7 0 S", "DATAHEADER=RECX 2 7 1 R\r",
                                        "INPUTTYPE=0"};
    ItemBench<AsciiInput> overwrite(kLine, lines(text, section));
    for (int i = 0; i < 4; ++i) overwrite.process({1});
    const int kSource[] = {100, 0, 300, 0}, kReceiver[] = {201, 202, 0, 0};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(overwrite.word("SRCX", i), kSource[i]) << i;
        EXPECT_EQ(overwrite.word("RECX", i), kReceiver[i]) << i;
    }

    section.back() = "MATCHHEADER=0 RECPOINT 2 7 1 R";
    ItemBench<AsciiInput> update(kLine, lines(text, section));
    for (const auto& [point, source] : {std::pair(201, 100), std::pair(202, 0)}) {
        update.set("RECPOINT", point);
        update.set("SRCX", 5);
        update.process({1});
        EXPECT_EQ(update.word("SRCX"), source);
        EXPECT_EQ(update.word("RECX"), point);
    }
}

// A display stops it after the first trace.
TEST_F(AsciiInputItem, CreatesATraceForEachRecord) {
    SetSystemDirectory(HALVERN_SOURCE_DIR);
    ItemBench<AsciiTraces> bench(
        kLine, lines("S   100\nR   201\nR   202\nS   300\nR   203\n",
                     {"INPUTTYPE=2", "DATAHEADER=SRCX 2 7 0 S", "MATCHHEADER=0 RECX 2 7 1 R"}));
    ReadPauseFlag = 1;
    bench.item().RunInput();
    SetSystemDirectory("");
    EXPECT_EQ(bench.passed().size(), 1u);
    EXPECT_EQ(bench.item().GetInputPosition(), 1);
    EXPECT_EQ(bench.item().GetInputTraceCount(), 5);
    ReadPauseFlag = 0;
    bench.item().ResumeInput();
    ASSERT_EQ(bench.passed().size(), 3u);
    const int kSource[] = {100, 100, 300};  // stays from trace to trace
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(bench.word("SRCX", i), kSource[i]);
        EXPECT_EQ(bench.word("RECX", i), 201 + i);
        EXPECT_EQ(bench.passed()[static_cast<std::size_t>(i)].samples, std::vector<float>(900));
    }
    EXPECT_EQ(bench.capture().line_interval_us, 4000);
}

TEST_F(AsciiInputItem, EndsTheJobOnWhatCannotWork) {
    const std::string file = folder.write("columns", "   1   2\n");
    const std::string match = "MATCHHEADER=0 FFID 1 4", data = "DATAHEADER=SRCX 5 8";
    const std::pair<std::vector<std::string>, std::string> kCases[] = {
        {{match, "DATAHEADER=NOWORD 1 4"}, "Invalid header word 'NOWORD'\n"},
        {{data}, "There must be at least one MATCH HEADER in UPDATE mode.\n"},
        {{match}, "There must be at least one DATA HEADER in UPDATE mode.\n"},
        {{"INPUTTYPE=0"},
         "at least one MATCH HEADER or DATA HEADER in OVERWRITE or CREATE mode.\n"},
        {{match, "DATAHEADER=SRCX"}, "no valid columns.  You have entered '0-0'"},
        {{match, data, "INPUTTYPE=3"}, "There is no method '3'.\n"},
        {{match, data, "FILENAME=no/file"}, "Cannot open file to read: 'no/file'\n"},
        {{match, data, "FILENAME=/dev/null"}, "Cannot open file to read: '/dev/null'\n"},
        {{match, data, "FILENAME=" + folder.path().string()}, "Cannot open file to read: '"},
        {{match, data, "STARTRECORD=9"}, "No records in file: '" + file + "'\n"},
    };
    for (const auto& [section, words] : kCases) {
        std::vector<std::string> all = {"FILENAME=" + file};
        all.insert(all.end(), section.begin(), section.end());
        ItemBench<AsciiInput> bench(kLine, all);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
    ItemBench<AsciiInput> first(kLine, {match, data});
    EXPECT_JOB_ERROR(first.item().RunInput(), "Only CREATE can be used as the first item");
}

TEST_F(AsciiInputItem, TheWindowChecksItsRows) {
    ItemBench<AsciiInput> bench(kLine, lines("123\n4567890 12345\n", {}));
    for (const Parameter& parameter : bench.base_item().Parameters()) {
        if (parameter.field.check) {
            EXPECT_EQ(parameter.field.check("1x"), "'1x' is not an integer.");
            EXPECT_EQ(parameter.field.check(" 12"), "");
        }
        if (parameter.field.preview) {
            EXPECT_THAT(parameter.field.preview(),
                        ElementsAre("        10", "1234567890123", "123", "4567890 12345"));
        }
        const auto* rows = std::get_if<Rows>(&parameter.value);
        if (!rows) continue;
        for (const auto& [name, range] : {std::pair("NONE", "1-2"), std::pair("FFID", "12"),
                                          std::pair("FFID", "1-2x"), std::pair("FFID", "-2")}) {
            EXPECT_NE(rows->assign({{name, range, "TRACE", "", "<="}}), "") << range;
        }
        EXPECT_EQ(rows->assign({{"FFID", "10 - 20", "NON-TRACE", "S", "<="}}), "");
        const auto cells = rows->cells();
        ASSERT_EQ(cells.size(), 1u);
        EXPECT_EQ(cells[0].size(), rows->columns.size());
        EXPECT_EQ(cells[0][1], "10-20");
        EXPECT_EQ(cells[0][2], "NON-TRACE");
    }
}

}  // namespace
}  // namespace halvern
