#include "desk/flows.h"

#include <gmock/gmock.h>

#include <thread>

#include "desk/command_error.h"
#include "desk/flow_parameters.h"
#include "desk/run_job.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

// What a CommandError says that `work` ends in.
template <class Work>
std::string refusal(Work&& work) {
    try {
        work();
    } catch (const CommandError& error) {
        return error.what();
    }
    return "nothing was refused";
}

class Flows : public testing::Test {
protected:
    // Comments, an unknown line, a key twice, a line end of another system, no last line end.
    const std::string text =
        "# made by hand\n$SEGYDINPUT\nFILE=a.sgy\n\n$AGC\n# short\nWINDOWSIZE=100\nHELLO\n"
        "WINDOWSIZE=200\n# before the next\n$$AGC\r\n$NMO\nTIME_VEL=1,2,3,4\n# between\n"
        "TIME_VEL=5,6,7,8";
    std::string with(std::string from, const std::string& part, const std::string& other) {
        const std::size_t at = from.find(part);
        EXPECT_NE(at, std::string::npos) << part;
        return from.replace(at, part.size(), other);
    }
    SystemPlace place;
};

TEST_F(Flows, AreKeptByteByByte) {
    for (const std::string& same : {text, text + "\n", std::string(), std::string("\n\n")}) {
        EXPECT_EQ(FlowDocument(same).text(), same);
    }
}

TEST_F(Flows, ChangeOnlyTheLineThatCounts) {
    FlowDocument flow(text);
    assign(flow, *flow.find("agc#1"), {"windowsize=300"});
    EXPECT_EQ(flow.text(), with(text, "WINDOWSIZE=200", "WINDOWSIZE=300"));
}

TEST_F(Flows, GetANewLineAfterTheParametersAndBeforeComments) {
    FlowDocument flow(text);
    assign(flow, *flow.find("SEGYDINPUT"), {"READALLTRACES=selected traces"});
    EXPECT_EQ(flow.text(), with(text, "FILE=a.sgy\n", "FILE=a.sgy\nREADALLTRACES=0\n"));
    FlowDocument other(text);
    assign(other, *other.find("AGC#2"), {"WINDOWSIZE=7"});
    EXPECT_EQ(other.text(), with(text, "$$AGC\r\n", "$$AGC\r\nWINDOWSIZE=7\r\n"));
}

TEST_F(Flows, EnableAndDisableByOneCharacter) {
    FlowDocument flow(text);
    flow.set_disabled(*flow.find("AGC#2"), false);
    flow.set_disabled(*flow.find("NMO"), true);
    flow.set_disabled(*flow.find("NMO"), true);
    EXPECT_EQ(flow.text(), with(with(text, "$$AGC", "$AGC"), "$NMO", "$$NMO"));
}

TEST_F(Flows, ReplaceTheRowsOfATableAsAWhole) {
    FlowDocument flow(text);
    assign(flow, *flow.find("NMO"), {"TIME_VEL=9,9,9,9", "MUTE_THRESH=30", "TIME_VEL=8,8,8,8"});
    EXPECT_EQ(flow.text(), with(with(text, "TIME_VEL=1,2,3,4\n",
                                     "TIME_VEL=9,9,9,9\nTIME_VEL=8,8,8,8\n"
                                     "MUTE_THRESH=30\n"),
                                "# between\nTIME_VEL=5,6,7,8", "# between\n"));
    assign(flow, *flow.find("NMO"), {"TIME_VEL="});
    EXPECT_THAT(flow.text(), Not(HasSubstr("TIME_VEL")));
}

TEST_F(Flows, KeepEquationsAndConditionsInTheOrderTheyAreGiven) {
    FlowDocument math(section_text(FlowItemKind::kHeaderMath));
    assign(math, 0, {"EQUATION=CHAN = 1", "WHERE=FFID > 2", "EQUATION=FOLD = 2", "WHERE="});
    const std::string expected =
        "$HEADERMATH\nEQUATION=CHAN = 1\nWHERE=FFID > 2\nEQUATION=FOLD = 2\nWHERE=\n";
    EXPECT_EQ(math.text(), expected);
    EXPECT_FALSE(edit_item(math, 0, [](FlowItem&) {}));
    EXPECT_EQ(math.text(), expected);
}

TEST_F(Flows, RefuseWhatFitsNothing) {
    FlowDocument flow(text);
    const std::vector<std::array<std::string, 3>> kCases = {
        {"AGC", "", "2 items AGC, AGC#1 to AGC#2; say which one"},
        {"AGC#3", "", "AGC#1 to AGC#2"},
        {"NMO#2", "", "one item NMO"},
        {"MUTE", "", "has no item MUTE"},
        {"FILTR", "", "did you mean FILTER?"},
        {"AGC#1", "WINDOWSZE=1", "did you mean WINDOWSIZE?"},
        {"AGC#1", "WINDOWSIZE=ten", "'ten' is not a whole number"},
        {"AGC#1", "WINDOWSIZE=10.5", "'.5' would be left out"},
        {"AGC#1", "WINDOWSIZE=99999999999", "too large"},
        {"AGC#1", "WINDOWSIZE=+-1", "not a whole number"},
        {"AGC#1", "WINDOWSIZE", "no KEY=VALUE"},
        {"NMO", "TIME_VEL=x", "no row"},
        {"NMO", "MUTE_THRESH=nan", "finite"},
        {"SEGYDINPUT", "READALLTRACES=2", "1 (ALL Traces), 0 (SELECTED Traces)"},
        {"SEGYDINPUT", "FILE=a\n$AGC", "one line"},
        {"SEGYDINPUT", "FILE=" + std::string(198, 'x'), "198 characters"}};
    for (const auto& each : kCases) {
        EXPECT_THAT(refusal([&] { assign(flow, required(flow.find(each[0])), {each[1]}); }),
                    HasSubstr(each[2]));
    }
    EXPECT_EQ(flow.text(), text);
}

TEST_F(Flows, ReadLongLinesAsAJobDoesAndReplaceThemWhole) {
    const std::string x(194, 'x');  // "FILE=" and 193 of them fill a piece
    FlowDocument flow("$SEGYDINPUT\nFILE=" + x + "\nREADALLTRACES=1\n$AGC\n");
    EXPECT_EQ(flow.text(), "$SEGYDINPUT\nFILE=" + x + "\nREADALLTRACES=1\n$AGC\n");
    EXPECT_TRUE(flow.is_continued(1));
    EXPECT_EQ(flow.flow_section(0).lines[1], "x");
    EXPECT_EQ(flow.flow_section(1).line_number, 4);
    assign(flow, 0, {"FILE=a.sgy"});
    EXPECT_EQ(flow.text(), "$SEGYDINPUT\nFILE=a.sgy\nREADALLTRACES=1\n$AGC\n");
}

TEST_F(Flows, TakeAndMoveItemsWithTheirLines) {
    FlowDocument flow("$SEGYDINPUT\nFILE=a\n$AGC\n# mine\n$MUTE");
    add_item(flow, "agc", {"WINDOWSIZE=3"}, "MUTE");
    EXPECT_EQ(flow.text(), "$SEGYDINPUT\nFILE=a\n$AGC\n# mine\n$AGC\nWINDOWSIZE=3\n$MUTE");
    move_item(flow, "AGC#1", {});
    EXPECT_EQ(flow.text(), "$SEGYDINPUT\nFILE=a\n$AGC\nWINDOWSIZE=3\n$MUTE\n$AGC\n# mine\n");
    move_item(flow, "AGC#2", "AGC#1");
    (void)flow.remove(*flow.find("AGC#2"));
    EXPECT_EQ(flow.text(), "$SEGYDINPUT\nFILE=a\n$AGC\n# mine\n$MUTE\n");
}

// Two commands that read, change and write back would each keep only their own change.
TEST_F(Flows, LoseNoChangeOfTwoCommandsAtATime) {
    const std::string path = place.folder.write("flow", "");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int k = 0; k < 10; ++k) {
                change_flow(
                    path, [](FlowDocument& flow) { flow = FlowDocument(flow.text() + "$MUTE\n"); });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(read_flow(path).sections().size(), 40u);
}

TEST_F(Flows, GiveTheRunFileItsProspectAndItsOwnValues) {
    const FlowDocument flow("$AGC\nWINDOWSIZE=1\n");
    EXPECT_EQ(run_text(with_values(flow, {"AGC.WINDOWSIZE=2"}), "north"),
              "$PROSPECT=north\n$AGC\nWINDOWSIZE=2\n");
    for (const char* wrong : {"WINDOWSIZE=2", "AGC.WINDOWSIZE", "X=AGC.WINDOWSIZE"}) {
        EXPECT_THAT(refusal([&] { (void)with_values(flow, {wrong}); }),
                    HasSubstr("ITEM.KEY=VALUE"));
    }
}

}  // namespace
}  // namespace halvern
