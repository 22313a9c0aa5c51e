#include "cli/terminal_host.h"

#include <gmock/gmock.h>

#include <sstream>

#include "desk/flow_parameters.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

class Dialogs : public testing::Test {
protected:
    // The flow after an item was asked for with these answers.
    std::string edited(const std::string& text, const std::string& item,
                       const std::string& answers) {
        FlowDocument flow(text);
        std::istringstream in(answers);
        std::ostringstream out;
        accepted = 0;
        edit_item(flow, *flow.find(item), [&](FlowItem& asked) {
            TerminalHost host(in, out);
            asked.ShowInterface(nullptr, 0, 0, &accepted);
        });
        said = out.str();
        return flow.text();
    }
    SystemPlace place;
    std::string said;
    int accepted = 0;
};

TEST_F(Dialogs, KeepHelpAndRefuse) {
    const std::string flow = "$AGC\n# mine\nWINDOWSIZE=300\n";
    EXPECT_EQ(edited(flow, "AGC", "\n"), flow);
    EXPECT_EQ(accepted, 1);
    EXPECT_EQ(edited(flow, "AGC", "?\nlong\n 500 \n"), "$AGC\n# mine\nWINDOWSIZE=500\n");
    EXPECT_THAT(said, HasSubstr("Window Size (in msec.)?\nWindow [300]: "));
    EXPECT_THAT(said, HasSubstr("Common window sizes are between 256 and 1024 milliseconds."));
    EXPECT_THAT(said, HasSubstr("'long' is not a whole number"));
    for (const char* leaves : {".\n", "", "?\n"}) {
        EXPECT_EQ(edited(flow, "AGC", leaves), flow);
        EXPECT_EQ(accepted, 0);
    }
}

TEST_F(Dialogs, LeavingPutsBackWhatWasAnswered) {
    const std::string flow = "$SEGYDOUTPUT\nFILE=a\nTIME=5\n";
    EXPECT_EQ(edited(flow, "SEGYDOUTPUT", "b\n0\n."), flow);
}

TEST_F(Dialogs, TakeChoicesByTextAndAskTwiceWhereItIsDangerous) {
    const std::string flow = "$SEGYDOUTPUT\nFILE=a\n";
    EXPECT_EQ(edited(flow, "SEGYDOUTPUT", "\nieee floating point\n2\nn\nappend\n\n\n"),
              flow + "OUTPUTFORMAT=0\nWRITETYPE=0\n");
    EXPECT_THAT(said, HasSubstr("EXTREMELY DANGEROUS"));
    EXPECT_EQ(edited(flow, "SEGYDOUTPUT", "\n\n2\ny\n\n\n"), flow + "WRITETYPE=2\n");
}

TEST_F(Dialogs, AskOnlyForWhatApplies) {
    const std::string flow = "$SEGYDINPUT\nFILE=a\n";
    EXPECT_EQ(edited(flow, "SEGYDINPUT", "\n\n1\n"), flow);
    EXPECT_THAT(said, Not(HasSubstr("range selection")));
    EXPECT_EQ(edited(flow, "SEGYDINPUT", "\n\n0\nFFID\n1-5\n"),
              flow + "READALLTRACES=0\nSELECTHEADER=FFID\nSELECTRANGE=1-5\n");
}

TEST_F(Dialogs, TakeTablesRowByRow) {
    const std::string flow = "$NMO\nMUTE_THRESH=0\nTIME_VEL=0.0,1500.0,1,1\n";
    EXPECT_EQ(edited(flow, "NMO", "\n\n\n"), flow);
    EXPECT_THAT(said, HasSubstr("1500"));
    const std::string changed = edited(flow, "NMO", "\n1 1 0 x\n\n1,1,100,1600\n2 1 0 1500\n\n\n");
    EXPECT_EQ(FlowDocument(changed).line_count(), 4u) << changed;
    EXPECT_THAT(changed, HasSubstr("1600"));
    EXPECT_THAT(changed, HasSubstr("\nMUTE_THRESH=0\n"));  // not even its spelling changed
}

}  // namespace
}  // namespace halvern
