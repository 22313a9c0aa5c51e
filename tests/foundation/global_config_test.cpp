#include "foundation/global_config.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "foundation/system_root.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing_support::file_bytes;
using testing_support::LogCapture;
using testing_support::SystemRoot;

class GlobalConfigFile : public testing::Test {
protected:
    /// Reads a configuration file of this text; its messages are in log_ and boxes_.
    int read(const std::string& text) {
        root_.write("halvern.cfg", text);
        return read();
    }
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
    std::string log_;
    std::string boxes_;
};

TEST_F(GlobalConfigFile, AMissingOneIsWrittenWithTheDefaults) {
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(file_bytes(root_.file("halvern.cfg")),
              "SCRATCHDIR=" + root_.file("scratch") +
                  "\nMINDISKSPACE=50\nMAXFILESIZE=1000\n"
                  "FONTSMALL=bf6x12\nFONTMEDIUM=6x14\nFONTLARGE=b9x16\nFONTFIXEDLIST=bf6x14\n"
                  "FONTLIST=f6x14\nFONTTEXT=f6x14\nFONTFIXEDTEXT=f6x14\nFONTBOTTOMANNO=bf6x12\n"
                  "FONTDISPLAYHEADING=b6x14\nFONTDISPLAYANNO=bf6x12\n"
                  "FONTFACE=Verdana\nFIXEDFACE=Courier New\nDATADIR=" +
                  root_.file("data") + "\n");
    EXPECT_THAT(root_.entries(), ElementsAre("data/", "halvern.cfg", "scratch/"));
    EXPECT_EQ(log_ + boxes_, "");

    EXPECT_EQ(read(), 0);  // and is read back without a complaint
    EXPECT_EQ(log_, "Scratch Directory  = " + root_.file("scratch") +
                        "\nMinimum Disk Space = 50\nMaximum File Size  = 1000\n"
                        "Data Directory     = " +
                        root_.file("data") + "\n");
    EXPECT_EQ(boxes_, "");
}

TEST_F(GlobalConfigFile, EveryValueIsTakenOverAndTheLastOneCounts) {
    root_.write("fast/x", "");
    root_.write("d1/x", "");
    const std::string text = "SCRATCHDIR=" + root_.file("fast") +
                             "\nMINDISKSPACE=70\nMAXFILESIZE=2000\n"
                             "FONTSMALL=a\nFONTMEDIUM=b\nFONTLARGE=c\nFONTFIXEDLIST=d\n"
                             "FONTLIST=e\nFONTTEXT=f\nFONTFIXEDTEXT=g\nFONTBOTTOMANNO=h\n"
                             "FONTDISPLAYHEADING=i\nFONTDISPLAYANNO=j\n"
                             "FONTFACE=Arial\nFIXEDFACE=Mono\n"
                             "TAPEDEVICE=/dev/nst0 8mm\nTAPEDEVICE=/tapes/a.tap image\n"
                             "DATADIR=" +
                             root_.file("d1") + "\n";
    EXPECT_EQ(read("MINDISKSPACE=60\n# no key\n" + text), 0);
    EXPECT_EQ(config_.text(), text);
    EXPECT_EQ(config_.font(Font::kSmall), "a");
    EXPECT_EQ(config_.font(Font::kFixedList), "d");
    EXPECT_EQ(config_.font(Font::kDisplayAnnotation), "j");
    EXPECT_EQ(boxes_, "");
    EXPECT_THAT(log_, HasSubstr("Minimum Disk Space = 60\n"));
    EXPECT_THAT(log_, HasSubstr("Tape Device        = /tapes/a.tap image\n"));

    std::string dos;  // the same file from another system
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) dos += line + "\r\n";
    EXPECT_EQ(read(dos), 0);
    EXPECT_EQ(config_.text(), text);
}

TEST_F(GlobalConfigFile, DirectoriesThatAreNotThereAreReported) {
    EXPECT_EQ(read("DATADIR=NONE\n"), 0);  // lists none, so that the standard one is used
    EXPECT_THAT(config_.data_directories(), ElementsAre(root_.file("data")));
    EXPECT_THAT(root_.entries(), ElementsAre("data/", "halvern.cfg", "scratch/"));
    EXPECT_EQ(log_ + boxes_, "");

    EXPECT_EQ(read("DATADIR=/no/such/place\nSCRATCHDIR=/no/such/place\n"), 0);
    EXPECT_THAT(config_.data_directories(), ElementsAre("/no/such/place"));
    EXPECT_EQ(boxes_,
              "Halvern Configuration Warning: DATADIR '/no/such/place' does not exist.\n"
              "Please check your global configuration\n");
    EXPECT_EQ(config_.scratch_directory(), root_.file("scratch"));
    EXPECT_THAT(log_, HasSubstr("Scratch directory '/no/such/place' does not exist"));
}

TEST_F(GlobalConfigFile, AMalformedTapeLineIsReportedAndStored) {
    struct Line {
        const char* value;
        const char* name;
        const char* type;
        bool reported;
    };
    const Line kLines[] = {{"/dev/rmt/0 8mm", "/dev/rmt/0", "8mm", false},
                           {"/dev/rmt/0,8mm", "/dev/rmt/0", "8mm", true},
                           {"/dev/rmt/0", "/dev/rmt/0", "", true},
                           {"a b c,d", "a", "b c,d", false},
                           {"", "", "", true}};
    for (const Line& line : kLines) {
        SCOPED_TRACE(line.value);
        EXPECT_EQ(read(std::string("TAPEDEVICE=") + line.value + "\n"), 0);
        ASSERT_EQ(config_.tape_devices().size(), 1u);
        EXPECT_EQ(config_.tape_devices()[0].name, line.name);
        EXPECT_EQ(config_.tape_devices()[0].type, line.type);
        const std::string box =
            "Configuration Error: "
            "The 'TAPEDEVICE=' line in your configuration file is not correct.\n"
            "   example:    TAPEDEVICE=/dev/rmt/0 8mm\n"
            "   example:    TAPEDEVICE=/dev/rmt/1 3480\n"
            "Current configuration file is '" +
            root_.file("halvern.cfg") + "'\n";
        EXPECT_EQ(boxes_, line.reported ? box : "");
    }
}

TEST_F(GlobalConfigFile, ListsEndAtSixtyFourInSilence) {
    std::string text;
    for (int i = 1; i <= 70; ++i) {
        text += "DATADIR=" + root_.path() + "\nTAPEDEVICE=t" + std::to_string(i) + " image\n";
    }
    EXPECT_EQ(read(text), 0);
    EXPECT_EQ(config_.data_directories().size(), 64u);
    ASSERT_EQ(config_.tape_devices().size(), 64u);
    EXPECT_EQ(config_.tape_devices()[63].name, "t64");
    EXPECT_EQ(log_.find("t65"), std::string::npos);
}

TEST_F(GlobalConfigFile, LongTextIsCut) {
    // 198 characters a read: "FONTLIST=" and 189 of the value; the rest is a line of its own.
    const std::string long_value(189, 'x');
    EXPECT_EQ(read("FONTFACE=" + std::string(100, 'f') + "\nFONTLIST=" + long_value +
                   "MINDISKSPACE=9\nFONTTEXT=\n"),
              0);
    EXPECT_EQ(config_.font_face(), std::string(80, 'f'));
    EXPECT_EQ(config_.font(Font::kList), long_value);
    EXPECT_EQ(config_.min_disk_space_mb(), 9);
    EXPECT_EQ(config_.text().find("FONTTEXT="), std::string::npos);  // empty: left out
}

TEST_F(GlobalConfigFile, OneThatCannotBeReadOrWrittenLeavesTheDefaults) {
    std::filesystem::create_directory(root_.file("halvern.cfg"));
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(config_.max_file_size_mb(), 1000);
    EXPECT_THAT(config_.data_directories(), ElementsAre(root_.file("data")));

    const LogCapture log;
    EXPECT_EQ(config_.read("/no/such/place/halvern.cfg"), -1);
    EXPECT_THAT(log.text(), HasSubstr("Cannot write configuration file "
                                      "'/no/such/place/halvern.cfg': No such file or directory."));
    EXPECT_EQ(config_.scratch_directory(), root_.file("scratch"));
}

}  // namespace
}  // namespace halvern
