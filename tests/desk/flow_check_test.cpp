#include "desk/flow_check.h"

#include <gmock/gmock.h>

#include "native/native_layout.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FlowChecks : public testing::Test {
protected:
    FlowChecks() { place.folder.write("in.sgy", "anything"); }
    // "line E text" each.
    std::vector<std::string> findings(const std::string& text) {
        std::vector<std::string> list;
        for (const Finding& finding : check_flow(FlowText(text))) {
            list.push_back(std::to_string(finding.line) + (finding.error ? " E " : " W ") +
                           finding.text);
        }
        return list;
    }
    SystemPlace place;
    const std::string input = "$SEGYDINPUT\nFILE=" + place.folder.file("in.sgy") + "\n";
    const std::string output = "$SEGYDOUTPUT\nFILE=" + place.folder.file("out.sgy") + "\n";
};

TEST_F(FlowChecks, FindNothingInASoundFlow) {
    EXPECT_THAT(
        findings("# a comment\n$PROSPECT=default\n" + input +
                 "\nREADALLTRACES=0\nSELECTHEADER=FFID\nSELECTRANGE=1-5\n$$MUTE\n$AGC\n" + output),
        IsEmpty());
    // What does not apply is not held against the flow.
    EXPECT_THAT(findings(input + "SELECTHEADER=NOWORD\nREADALLTRACES=1\n"), IsEmpty());
}

TEST_F(FlowChecks, NameTheLineOfEachFault) {
    const std::vector<std::pair<std::string, std::string>> kFaults = {
        {"", "0 E there is no enabled item"},
        {"$$AGC\n", "0 E there is no enabled item"},
        {"$AGC\n", "1 E AGC cannot begin a flow"},
        {"$PROSPECT=nowhere\n" + input, "1 E there is no prospect 'nowhere'"},
        {"FILE=x\n" + input, "1 W stands before the first section"},
        {input + "$AGCC\n", "3 W 'AGCC' is read as AGC"},
        {input + "$AGG\n", "3 E there is no flow item 'AGG'; did you mean AGC?"},
        {input + "$AGC\nSIZE=3\n", "4 E AGC has no parameter 'SIZE'"},
        {input + "$AGC\nwindow of 3\n", "4 W is no KEY=VALUE"},
        {input + "$AGC\nWINDOWSIZE=3 s\n", "4 E WINDOWSIZE: '3 s' is not a whole number"},
        {input + "$AGC\nWINDOWSIZE=3\nWINDOWSIZE=4\n", "4 W WINDOWSIZE stands again in line 5"},
        {input + "$$AGC\nWINDOWSIZE=x\n", "4 E WINDOWSIZE"},
        {input + "$TRACEBINNING\nXORIGIN=x\n", "4 E XORIGIN: 'x' is not a number"},
        {input + "READALLTRACES=7\n", "3 E READALLTRACES: '7' is none of the choices"},
        {input + "READALLTRACES=0\nSELECTHEADER=FFIDD\n",
         "4 E SELECTHEADER: the header description has no word 'FFIDD'; did you mean FFID?"},
        {input + "HEADERFILE=/no/such\n", "3 E HEADERFILE: the file '/no/such' does not exist"},
        {"$SEGYDINPUT\n", "1 E FILE: no file has been chosen"},
        {"$SEGYDINPUT\nFILE=" + std::string(200, 'x') + "\n",
         "a line of a flow holds 198 characters"},
        {input + "$SEGYDOUTPUT\nFILE=/no/such/out\n", "4 E the directory '/no/such' does not"},
        {input + "$SEGYDOUTPUT\nFILE=" + place.folder.file("in.sgy"), "4 E the output file"},
        {input + output + output, "6 E the file '"},
        {input + input, "3 E SEGYDINPUT is an input"},
        {input + "$SORT\n$SEIS2DISPLAY\n", "4 E SEIS2DISPLAY is a display and cannot stand behind"},
        {input + "$GEODISPLAY\n", "3 E GEODISPLAY must be the only item"},
        {input + "$HEADER3DISPLAY\n", "3 E HEADER3DISPLAY is not available"},
    };
    for (const auto& [flow, fault] : kFaults) {
        EXPECT_THAT(findings(flow), testing::Contains(HasSubstr(fault))) << flow;
    }
}

TEST_F(FlowChecks, TakeOverwritingTheInputForWhatItIs) {
    EXPECT_THAT(findings(input + "$SEGYDOUTPUT\nFILE=NONE\nWRITETYPE=2\n"), IsEmpty());
}

TEST_F(FlowChecks, KnowTheSiteDefaults) {
    std::filesystem::create_directory(place.folder.path() / "defaults");
    place.folder.write("defaults/site", "$SEGYDINPUT\nREADALLTRACES=0\nSELECTHEADER=NOWORD\n");
    EXPECT_THAT(findings(input), ElementsAre(HasSubstr("no word 'NOWORD'")));
}

TEST_F(FlowChecks, LookUpWordsInTheDatasetsOwnDescription) {
    NativeMain parts{.desc_path = place.folder.file("header/default"),
                     .line_path = place.folder.file("line"),
                     .segments = {}};
    ASSERT_FALSE(parts.write(place.folder.file("ds")));
    const std::string dataset = "$KELDARDINPUT\nFILE=" + place.folder.file("ds") + "\n";
    EXPECT_THAT(findings(dataset + "$SORT\nHEADER1=OFFSET\nHEADER2=OFSET\n"),
                ElementsAre(HasSubstr("5 E HEADER2: the header description has no word 'OFSET'")));
}

}  // namespace
}  // namespace halvern
