#include "foundation/global_config.h"

#include <gmock/gmock.h>

#include <regex>

#include "foundation/system_root.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using namespace testing_support;

class GlobalConfigFile : public testing::Test {
protected:
    /// Reads the configuration file; its messages are in log_ and boxes_.
    int read(const std::string& text) { return root_.write("halvern.cfg", text), read(); }
    int read() {
        const LogCapture log;
        testing::internal::CaptureStderr();
        const int result = config_.read(root_.file("halvern.cfg"));
        boxes_ = testing::internal::GetCapturedStderr();
        log_ = log.text();
        return result;
    }

    SystemRoot root_;
    GlobalConfig config_;
    std::string log_, boxes_;
};

TEST_F(GlobalConfigFile, AMissingOneIsWrittenAndReadsBack) {
    EXPECT_EQ(read(), 0);
    EXPECT_THAT(root_.entries(), ElementsAre("data/", "halvern.cfg", "scratch/"));
    EXPECT_EQ(log_ + boxes_, "");
    const std::string text = config_.text();
    EXPECT_EQ(file_bytes(root_.file("halvern.cfg")), text);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(config_.text(), text);
    EXPECT_EQ(boxes_, "");
}

TEST_F(GlobalConfigFile, EveryValueIsTakenOverAndTheLastOneCounts) {
    const std::string text =
        "SCRATCHDIR=/\nMINDISKSPACE=70\nMAXFILESIZE=2000\nFONTSMALL=a\nFONTMEDIUM=b\nFONTLARGE=c\n"
        "FONTFIXEDLIST=d\nFONTLIST=e\nFONTTEXT=f\nFONTFIXEDTEXT=g\nFONTBOTTOMANNO=h\n"
        "FONTDISPLAYHEADING=i\nFONTDISPLAYANNO=j\nFONTFACE=Arial\nFIXEDFACE=Mono\n"
        "TAPEDEVICE=/dev/nst0 8mm\nTAPEDEVICE=a b c,d\nDATADIR=/\n";
    EXPECT_EQ(read("MINDISKSPACE=60\n# no key\n" + text), 0);
    EXPECT_EQ(config_.text(), text);
    EXPECT_EQ(config_.font(Font::kDisplayAnnotation), "j");
    EXPECT_EQ(boxes_, "");
    // The same file from another system.
    EXPECT_EQ(read(std::regex_replace(text, std::regex("\n"), "\r\n")), 0);
    EXPECT_EQ(config_.text(), text);
}

TEST_F(GlobalConfigFile, DirectoriesThatAreNotThereAreReported) {
    EXPECT_EQ(read("DATADIR=NONE\n"), 0);  // lists none, so that the standard one is used
    EXPECT_THAT(config_.data_directories(), ElementsAre(root_.file("data")));
    EXPECT_EQ(log_ + boxes_, "");

    EXPECT_EQ(read("DATADIR=/no/such/place\nSCRATCHDIR=/no/such/place\n"), 0);
    EXPECT_THAT(boxes_, HasSubstr("DATADIR '/no/such/place' does not exist."));
    EXPECT_EQ(config_.scratch_directory(), root_.file("scratch"));
    EXPECT_THAT(log_, HasSubstr("Scratch directory '/no/such/place' does not exist"));
}

TEST_F(GlobalConfigFile, AMalformedTapeLineIsReportedAndStored) {
    const std::pair<std::string, std::string> kLines[] = {{"/dev/rmt/0,8mm", "/dev/rmt/0 8mm"},
                                                          {"/dev/rmt/0", "/dev/rmt/0 "}};
    for (const auto& [given, stored] : kLines) {
        EXPECT_EQ(read("TAPEDEVICE=" + given + "\n"), 0);
        EXPECT_THAT(config_.text(), HasSubstr("TAPEDEVICE=" + stored + "\n"));
        EXPECT_THAT(boxes_, HasSubstr("The 'TAPEDEVICE=' line"));
    }
}

TEST_F(GlobalConfigFile, ListsEndAtSixtyFour) {
    std::string text;
    for (int i = 1; i <= 70; ++i) text += "DATADIR=/\nTAPEDEVICE=t" + std::to_string(i) + " x\n";
    EXPECT_EQ(read(text), 0);
    EXPECT_EQ(config_.data_directories().size(), 64u);
    ASSERT_EQ(config_.tape_devices().size(), 64u);
    EXPECT_EQ(config_.tape_devices()[63].name, "t64");
}

TEST_F(GlobalConfigFile, LongTextIsCut) {
    // 198 characters a read: "FONTLIST=" and 189 of the value; the rest is a line of its own.
    const std::string long_value(189, 'x');
    read("FONTFACE=" + std::string(100, 'f') + "\nFONTLIST=" + long_value + "MINDISKSPACE=9\n");
    EXPECT_EQ(config_.font_face(), std::string(80, 'f'));
    EXPECT_EQ(config_.font(Font::kList), long_value);
    EXPECT_EQ(config_.min_disk_space_mb(), 9);
}

TEST_F(GlobalConfigFile, OneThatCannotBeReadOrWrittenLeavesTheDefaults) {
    std::filesystem::create_directory(root_.file("halvern.cfg"));
    EXPECT_EQ(read(), -1);
    EXPECT_THAT(config_.data_directories(), ElementsAre(root_.file("data")));

    const LogCapture log;
    EXPECT_EQ(config_.read("/no/such/place/halvern.cfg"), -1);
    EXPECT_THAT(log.text(), HasSubstr("place/halvern.cfg': No such file or directory."));
    EXPECT_EQ(config_.scratch_directory(), root_.file("scratch"));
}

}  // namespace
}  // namespace halvern
