#include "geometry/ascii_input.h"

#include <gmock/gmock.h>

#include "foundation/system_paths.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

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
    const struct {
        int ffid, chan;
        double srcx, temp;
    } kTraces[] = {{2, 1, 21, .5}, {1, 1, 11, 1.5}, {1, 9, -10, 2.5}, {3, 1, 77, 0}, {2, 0, 77, 0}};
    for (const auto& trace : kTraces) {
        bench.set("FFID", trace.ffid);
        bench.set("CHAN", trace.chan);
        bench.set("SRCX", 77);
        bench.process({1});
        // Channels 1 and 2 of file 1 both fit a trace of channel 9: either record is right.
        if (trace.chan == 9) continue;
        EXPECT_EQ(bench.word("SRCX"), trace.srcx) << trace.ffid;
        EXPECT_EQ(bench.word("TEMP"), trace.temp) << trace.ffid;
    }
    EXPECT_EQ(bench.item().matched(), 3);
    EXPECT_THAT(bench.log(), HasSubstr("ASCII Data Input: Scanning the ASCII Input file.\n"));
    bench.finish();
}

// S lines complete no record. What they hold stands in the record that the next R line completes.
TEST_F(AsciiInputItem, NonTraceLinesAddToTheNextRecord) {
    const std::string text = "S   100\nR   201\nR   202\nS   300\n";
    // The second line comes from a flow file with CR LF, of which the CR belongs to no key.
    const std::vector<std::string> fields = {"DATAHEADER=SRCX 2 7 0 S",
                                             "DATAHEADER=RECX 2 7 1 R\r"};
    std::vector<std::string> section = fields;
    section.push_back("INPUTTYPE=0");
    ItemBench<AsciiInput> overwrite(kLine, lines(text, section));
    for (int i = 0; i < 4; ++i) overwrite.process({1});
    const int kSource[] = {100, 0, 300, 0}, kReceiver[] = {201, 202, 0, 0};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(overwrite.word("SRCX", i), kSource[i]) << i;
        EXPECT_EQ(overwrite.word("RECX", i), kReceiver[i]) << i;
    }

    section = fields;
    section.push_back("MATCHHEADER=0 RECPOINT 2 7 1 R");
    ItemBench<AsciiInput> update(kLine, lines(text, section));
    for (const auto& [point, source] : {std::pair(201, 100), std::pair(202, 0)}) {
        update.set("RECPOINT", point);
        update.set("SRCX", 5);
        update.process({1});
        EXPECT_EQ(update.word("SRCX"), source);
        EXPECT_EQ(update.word("RECX"), point);
    }
}

TEST_F(AsciiInputItem, CreatesATraceForEachRecord) {
    SetSystemDirectory(HALVERN_SOURCE_DIR);
    ItemBench<AsciiInput> bench(
        kLine, lines("S   100\nR   201\nR   202\nS   300\nR   203\n",
                     {"INPUTTYPE=2", "DATAHEADER=SRCX 2 7 0 S", "MATCHHEADER=0 RECX 2 7 1 R"}));
    bench.item().RunInput();
    SetSystemDirectory("");
    ASSERT_EQ(bench.passed().size(), 3u);
    const int kSource[] = {100, 100, 300};  // stays from trace to trace
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(bench.word("SRCX", i), kSource[i]);
        EXPECT_EQ(bench.word("RECX", i), 201 + i);
        EXPECT_EQ(bench.passed()[static_cast<std::size_t>(i)].samples, std::vector<float>(900));
    }
    EXPECT_EQ(bench.capture().line_samples, 900);
    EXPECT_EQ(bench.capture().line_interval_us, 4000);
    EXPECT_THAT(bench.log(), HasSubstr("Creating traces of 900 samples at 4 ms, IEEE"));
}

TEST_F(AsciiInputItem, PausesWhereADisplayAsksForIt) {
    SetSystemDirectory(HALVERN_SOURCE_DIR);
    ItemBench<AsciiInput> bench(kLine,
                                lines("   1\n   2\n", {"INPUTTYPE=2", "DATAHEADER=FFID 1 4"}));
    ReadPauseFlag = 1;
    bench.item().RunInput();
    SetSystemDirectory("");
    EXPECT_EQ(bench.passed().size(), 1u);
    EXPECT_EQ(bench.item().GetInputPosition(), 1);
    EXPECT_EQ(bench.item().GetInputTraceCount(), 2);
    ReadPauseFlag = 0;
    bench.item().ResumeInput();
    EXPECT_EQ(bench.passed().size(), 2u);
}

TEST_F(AsciiInputItem, SaysWhatItWillDo) {
    const std::vector<std::string> section = {"INPUTTYPE=0",
                                              "STARTRECORD=3",
                                              "FILENAME=a b",
                                              "DATAHEADER=SRCX 1 8",
                                              "DATAHEADER=SRCY 9 16 0 S",
                                              "DATAHEADER=RECX 9 16 1 R 1",
                                              "MATCHHEADER=2 CHAN 5 9",
                                              "MATCHHEADER=0 FFID 1 4 0 S",
                                              "MATCHHEADER=3 FFID 1 4 1 R"};
    ItemBench<AsciiInput> bench(kLine, section);
    std::string expected =
        "ASCII File Name = a b\n"
        "Method          = OVERWRITE EXISTING HEADERS\n"
        "Starting Record = 3\n"
        "Data Header     = SRCX from locations 1 through 8\n"
        "Data Header     = SRCY from locations 9 through 16 - NON-TRACE - key = 'S'\n"
        "Data Header     = RECX from locations 9 through 16 - TRACE -     key = 'R 1'\n"
        "Match Header     = CHAN using '< ' from locations 5 through 9\n"
        "Match Header     = =  using 'FFID' from locations 1 through 4 - NON-TRACE - key = 'S'\n"
        "Match Header     = <= using 'FFID' from locations 1 through 4 - TRACE -     key = 'R'\n";
    for (std::size_t at = 0; at < expected.size(); at = expected.find('\n', at) + 1) {
        expected.insert(at, "ASCII Data Input: ");
    }
    EXPECT_THAT(bench.log(), HasSubstr(expected));
    ItemBench<AsciiInput> create(kLine, {"INPUTTYPE=2"});
    EXPECT_THAT(create.log(), HasSubstr("Method          = CREATE NEW HEADERS\nASCII Data Input: "
                                        "Header definition file name = "));
}

TEST_F(AsciiInputItem, EndsTheJobOnWhatCannotWork) {
    const std::string file = folder.write("columns", "   1   2\n");
    const std::string match = "MATCHHEADER=0 FFID 1 4", data = "DATAHEADER=SRCX 5 8";
    const std::pair<std::vector<std::string>, std::vector<std::string>> kCases[] = {
        {{match, "DATAHEADER=NOWORD 1 4"}, {"Invalid header word 'NOWORD'\n"}},
        {{data},
         {"There must be at least one MATCH HEADER in UPDATE mode.\n",
          "The MATCH HEADERS are used to syncronize the ASCII file with the SEGY file.\n"}},
        {{match},
         {"There must be at least one DATA HEADER in UPDATE mode.\n",
          "The DATA HEADERS are updated when an ASCII record matches a SEGY record.\n"}},
        {{"INPUTTYPE=0"},
         {"There must be at least one MATCH HEADER or DATA HEADER in OVERWRITE or CREATE mode.\n"}},
        {{match, "DATAHEADER=SRCX"}, {"The header 'SRCX' has no valid columns.", "'0-0'"}},
        {{match, data, "INPUTTYPE=3"}, {"There is no method '3'.\n"}},
        {{match, data, "FILENAME=no/file"}, {"Cannot open file to read: 'no/file'\n"}},
        {{match, data, "FILENAME=" + folder.path().string()}, {"Cannot open file to read: '"}},
        {{match, data, "STARTRECORD=9"}, {"No records in file: '" + file + "'\n"}},
    };
    for (const auto& [section, words] : kCases) {
        std::vector<std::string> all = {"FILENAME=" + file};
        all.insert(all.end(), section.begin(), section.end());
        ItemBench<AsciiInput> bench(kLine, all);
        const std::string log = job_error_log([&] { bench.prepare(); });
        EXPECT_THAT(log, HasSubstr("*** ERROR in ASCII Data Input: "));
        for (const std::string& word : words) EXPECT_THAT(log, HasSubstr(word));
    }
    ItemBench<AsciiInput> device(kLine, {data, "INPUTTYPE=2", "FILENAME=/dev/null"});
    EXPECT_JOB_ERROR(device.item().RunInput(), "'/dev/null' is a pipe or a device.\n");
    for (const char* method : {"INPUTTYPE=0", "INPUTTYPE=1"}) {
        ItemBench<AsciiInput> bench(kLine, {match, data, method});
        const std::string log = job_error_log([&] { bench.item().RunInput(); });
        EXPECT_THAT(log, HasSubstr("Only CREATE can be used as the first item in a flow.\n"));
        const auto named = HasSubstr("*** ERROR in ASCII Data Input: Method          = OVERWRITE");
        if (method[10] == '0') {
            EXPECT_THAT(log, named);
        } else {
            EXPECT_THAT(log, Not(HasSubstr("Method ")));
        }
    }
}

TEST_F(AsciiInputItem, TheWindowChecksItsRows) {
    ItemBench<AsciiInput> bench(kLine, lines("123\n4567890 12345\n", {}));
    EXPECT_EQ(bench.base_item().WindowTexts().title, "ASCII File Input Parameters");
    EXPECT_EQ(bench.base_item().WindowTexts().already_up,
              "ASCII File Input Interface is already up.");
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
        const auto refused = [&](const char* name, const char* range) {
            return rows->assign({{name, range, "TRACE", "", "<="}});
        };
        EXPECT_EQ(refused("NONE", "1-2"), "Enter a header word other than 'None'");
        EXPECT_EQ(refused("FFID", "12"),
                  "Make sure to enter a range including a '-' character.  Example:   10-20.");
        EXPECT_EQ(refused("FFID", "1-2x"), "2x is not a valid number.\n");
        EXPECT_EQ(refused("FFID", "-2"), " is not a valid number.\n");
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
