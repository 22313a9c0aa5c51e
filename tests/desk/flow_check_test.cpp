#include "desk/flow_check.h"

#include <gmock/gmock.h>

#include <chrono>

#include "native/native_layout.h"
#include "support/small_segy.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::IsEmpty;

class FlowChecks : public testing::Test {
protected:
    FlowChecks() {
        place.folder.write(
            "in.sgy",
            small_segy(4000, 4, {{.ffid = 1, .channel = 1, .offset = 5, .samples = {1, 2, 3, 4}}}));
    }
    // "line E text" each.
    std::vector<std::string> findings(const std::string& text) {
        std::vector<std::string> list;
        for (const Finding& finding : check_flow(FlowDocument(text))) {
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
        findings(
            "# a comment\n$PROSPECT=default\n" + input +
            "\nREADALLTRACES=0\nSELECTHEADER=FFID\nSELECTRANGE=1-5\n$$MUTE\n$AGC\nWINDOWSIZE=8\n" +
            output),
        IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(place.folder.file("out.sgy"))) << "only rehearsed";
}

TEST_F(FlowChecks, NameTheLineOfEachFault) {
    const std::vector<std::pair<std::string, std::string>> kFaults = {
        {"", "0 E there is no enabled item"},
        {"$$AGC\n", "0 E there is no enabled item"},
        {"$AGC\n", "1 W AGC cannot begin a flow"},
        {"$PROSPECT=nowhere\n" + input, "1 E there is no prospect 'nowhere'"},
        {"FILE=x\n" + input, "1 W comes before the first section"},
        {input + "$AGCC\n", "3 W 'AGCC' is read as AGC"},
        {input + "$AGG\n", "3 E there is no flow item 'AGG'; did you mean AGC?"},
        {input + "$AGC\nSIZE=3\n", "4 W AGC has no parameter 'SIZE'"},
        {input + "$AGC\nwindow of 3\n", "4 W is no KEY=VALUE"},
        {input + "$AGC\nWINDOWSIZE=3 s\n", "4 W WINDOWSIZE: '3 s' is not a whole number"},
        {input + "$AGC\nWINDOWSIZE=3\nWINDOWSIZE=4\n", "4 W WINDOWSIZE occurs again in line 5"},
        {input + "$$AGC\nWINDOWSIZE=x\n", "4 W WINDOWSIZE"},
        {input + "$TRACEBINNING\nXORIGIN=x\n", "4 W XORIGIN: 'x' is not a number"},
        {input + "READALLTRACES=7\n", "3 W READALLTRACES: '7' is none of the choices"},
        {input + "READALLTRACES=0\nSELECTHEADER=FFIDD\n",
         "4 W SELECTHEADER: the header description has no word 'FFIDD'; did you mean FFID?"},
        {input + "HEADERFILE=/no/such\n", "3 E HEADERFILE: the file '/no/such' does not exist"},
        {"$SEGYDINPUT\n", "1 E FILE: no file has been chosen"},
        {"$SEGYDINPUT\nFILE=" + std::string(200, 'x') + "\n", "2 W is longer than 198 characters"},
        {input + "$SEGYDOUTPUT\nFILE=/no/such/out\n", "4 E the directory '/no/such' does not"},
        {input + "$SEGYDOUTPUT\nFILE=" + place.folder.file("in.sgy"), "3 E SEGYDOUTPUT: "},
        {input + output + output, "5 E SEGYDOUTPUT#2: "},
        {input + input, "3 E An input 'SEG-Y Disk Input' must be the first"},
        {input + "$SORT\n$SEIS2DISPLAY\n", "4 E A display 'Trace Display 2D' cannot be run"},
        {input + "$GEODISPLAY\n", "3 E An exclusive process 'Geometry Display' cannot be run"},
        {input + "$HEADER3DISPLAY\n", "3 E HEADER3DISPLAY is not available"},
        {input, "0 W no item writes or shows anything"},
        {input + "$NMO\nTIME_VEL=1500,1,1,1\n", "4 W TIME_VEL: "},
        {input + "SELECTHEADER=CHAN\nREADALLTRACES=1\n", "3 W SELECTHEADER has no effect"},
        {input + "$AGC\nWINDOWSIZE=-1\n", "3 E AGC: The window size parameter must be"},
        {input + "$SEGYDOUTPUT\nFILE=" + place.folder.write("old.sgy", "x") + "\nWRITETYPE=1\n",
         "exists and will be replaced"},
        {input + "$SORT\nHEADER1=FFID\n$STACK\nHEADER1=CDPN\n", "W "},
    };
    for (const auto& [flow, fault] : kFaults) {
        EXPECT_THAT(findings(flow), testing::Contains(HasSubstr(fault))) << flow;
    }
}

// What takes a job hours to find, and how long it may take at most, on a file of 100 GB.
TEST_F(FlowChecks, AreQuickOnLargeFiles) {
    std::filesystem::resize_file(place.folder.file("in.sgy"), 3600 + 391'000'000LL * 256);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_THAT(findings(input + "$AGC\nWINDOWSIZE=8\n" + output), IsEmpty());
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(FlowChecks, TakeOverwritingTheInputForWhatItIs) {
    EXPECT_THAT(findings(input + "$SEGYDOUTPUT\nFILE=NONE\nWRITETYPE=2\n"), IsEmpty());
}

TEST_F(FlowChecks, KnowTheSiteDefaults) {
    std::filesystem::create_directory(place.folder.path() / "defaults");
    place.folder.write("defaults/site", "$SEGYDINPUT\nREADALLTRACES=0\nSELECTHEADER=NOWORD\n");
    EXPECT_THAT(findings(input + output), testing::Contains(HasSubstr("no word 'NOWORD'")));
}

TEST_F(FlowChecks, LookUpWordsInTheDatasetsOwnDescription) {
    NativeMain parts{.desc_path = place.folder.file("header/default"),
                     .line_path = place.folder.file("line"),
                     .segments = {}};
    ASSERT_FALSE(parts.write(place.folder.file("ds")));
    const std::string dataset = "$KELDARDINPUT\nFILE=" + place.folder.file("ds") + "\n";
    EXPECT_THAT(
        findings(dataset + "$SORT\nHEADER1=OFFSET\nHEADER2=OFSET\n"),
        testing::Contains(HasSubstr("5 W HEADER2: the header description has no word 'OFSET'")));
}

}  // namespace
}  // namespace halvern
