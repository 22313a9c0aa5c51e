#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "segy/segy_disk_input.h"
#include "segy/segy_disk_output.h"
#include "support/small_segy.h"
#include "tape/image_bytes.h"
#include "tape/image_scsi.h"
#include "tape/image_tools.h"
#include "tape/segy_tape_input.h"
#include "tape/segy_tape_output.h"
#include "tape/tape_job.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::EndsWith;
using testing::HasSubstr;

// The blocks of a small SEG-Y file (IEEE, three samples of 4 ms) with these FFIDs.
std::string tape_file(const std::vector<int>& ffids, int samples = 3) {
    std::vector<SmallTrace> list;
    for (const int ffid : ffids) {
        list.push_back(
            {.ffid = ffid, .samples = std::vector<float>(static_cast<std::size_t>(samples), 1)});
    }
    const std::string file = small_segy(4000, samples, list);
    std::string bytes = block(file.substr(0, 3200)) + block(file.substr(3200, 400));
    const std::size_t record = 240 + static_cast<std::size_t>(samples) * 4;
    for (std::size_t at = 3600; at < file.size(); at += record)
        bytes += block(file.substr(at, record));
    return bytes;
}
constexpr std::size_t kLineHeader = 3208 + 408;
std::string trace_of(int ffid, int samples = 3) {
    return tape_file({ffid}, samples).substr(kLineHeader);
}

class SegyTape : public TapeJob {
protected:
    void read(const std::string& bytes, std::vector<std::string> lines = {}) {
        folder.write("tape.tap", bytes);
        run<SegyTapeInput>(std::move(lines));
    }
    std::vector<int> ffids() {
        std::vector<int> list;
        for (std::size_t i = 0; i < traces.size(); ++i)
            list.push_back(static_cast<int>(header_word(i, "FFID")));
        return list;
    }
};

TEST_F(SegyTape, OneFilemarkIsSteppedOverAndTwoEndTheTape) {
    read(tape_file({7}) + filemark() + trace_of(8) + filemark() + filemark() + trace_of(9));
    EXPECT_EQ(ffids(), (std::vector{7, 8}));
    EXPECT_EQ(traces[1].samples, (std::vector<float>{1, 1, 1}));
    EXPECT_FALSE(ended_in_error);
    const std::string name = "SEG-Y Tape Input: ";
    for (const std::string& line :
         {name + "Attempting to open tape drive: " + image + "\n" + name +
              "Successfully read 'SEG Y EBCDIC Header' of 3200 bytes from tape " + image + "\n" +
              name + "Attempting to read 'SEG Y Line Header' from tape: " + image + "\n" + name +
              "Successfully read 'SEG Y Line Header' of 400 bytes from tape " + image + "\n" +
              "SEG-Y File '" + image + "' Statistics:\n",
          std::string("  Data Format:                IEEE FLOAT\nStarting Data Read\n"),
          name + "Skipping forward traces     = 0\n" + name +
              "Eject tape and wait         = NO EJECT\n",
          name + "Last tape has been read!!!\n"}) {
        EXPECT_THAT(job_log, HasSubstr(line));
    }
    EXPECT_THAT(job_log, testing::Not(HasSubstr("Number of Traces")));
    read(tape_file({7}));  // the data end without a mark
    EXPECT_EQ(ffids(), std::vector{7});
}

TEST_F(SegyTape, ReadsOnBehindAnotherLineHeader) {
    read(tape_file({7}) + filemark() + tape_file({8}) + filemark() + filemark());
    EXPECT_EQ(ffids(), (std::vector{7, 8}));
    read(tape_file({7}) + filemark() + tape_file({8}, 4) + filemark() + filemark());
    EXPECT_TRUE(ended_in_error);
    EXPECT_THAT(job_log, HasSubstr("differ from those before"));
    // 740 samples make a trace as long as a text header.
    read(tape_file({7}, 740) + filemark() + trace_of(8, 740) + filemark() + trace_of(9, 740) +
         trace_of(10, 740) + filemark() + tape_file({11}, 740));
    EXPECT_EQ(ffids(), (std::vector{7, 8, 9, 10, 11}));
    // A drive may have padded shorter ones to that length, all or the first ones.
    const auto padded = [](int ffid) {
        return block(trace_of(ffid).substr(4, 252) + std::string(2948, '\0'));
    };
    read(tape_file({7}) + filemark() + padded(8) + padded(9) + filemark() + padded(10) +
         trace_of(11) + filemark() + padded(12));
    EXPECT_EQ(ffids(), (std::vector{7, 8, 9, 10, 11, 12}));
    EXPECT_THAT(job_log, HasSubstr("4 blocks hold more than a trace"));
}

TEST_F(SegyTape, SkipsFilesAndTraces) {
    read(tape_file({1, 2}) + filemark() + tape_file({3, 4, 5}) + filemark() + filemark(),
         {"NUMFILEFF=1", "NUMRECFF=2"});
    EXPECT_EQ(ffids(), std::vector{5});
    read(tape_file({1}) + filemark() + filemark(), {"NUMFILEFF=9"});
    EXPECT_TRUE(ended_in_error);
    read(tape_file({1}) + filemark() + filemark(), {"NUMRECFF=9"});
    EXPECT_TRUE(traces.empty());
    EXPECT_FALSE(ended_in_error);
}

TEST_F(SegyTape, EndsTheJobWhereTheTapeIsNotAsItShouldBe) {
    const std::string good = tape_file({7});
    const auto another_line = [&](const char* text_headers) {  // of revision 1
        return good + filemark() +
               tape_file({8})
                   .substr(0, kLineHeader)
                   .replace(3208 + 4 + 300, 6, std::string("\1\0\0\0", 4) + text_headers);
    };
    const struct {
        std::string bytes;
        std::string words;
    } kTapes[] = {
        {"", "Failed to read 'SEG Y EBCDIC Header' from tape " + image + ", got 0 bytes\n"},
        {block(std::string(80, ' ')),
         "Failed to read 'SEG Y EBCDIC Header' from tape " + image + ", got 80 bytes\n"},
        {good.substr(0, 3208) + block(std::string(399, '\0')),
         "Failed to read 'SEG Y Line Header' from tape " + image + ", got 399 bytes\n"},
        {good + block("short"), "ERROR: Read 5 bytes from tape when 252 bytes were expected.\n"},
        {good + block(std::string(252, 'x'), 0x80000000), "ERROR Read tape: " + image + "\n"},
        {good + word(252) + "cut", "ERROR Read tape: " + image + "\n"},
        {good + filemark() + good.substr(0, 3208) + filemark(),
         "Failed to read 'SEG Y Line Header' from tape " + image + ", got 0 bytes\n"},
        {another_line("\xFF\xFF") + trace_of(8),
         "The further line header on tape " + image + " announces a variable number"},
        {another_line("\1\1") + trace_of(8), "Tape " + image + " ends before the 257 extended"},
    };
    for (const auto& tape : kTapes) {
        read(tape.bytes);
        EXPECT_TRUE(ended_in_error) << tape.words;
        EXPECT_THAT(job_log, HasSubstr("*** ERROR in SEG-Y Tape Input: " + tape.words));
    }
    run<SegyTapeInput>({"DEVICE=/no/such/drive"});
    EXPECT_TRUE(ended_in_error);
    EXPECT_THAT(job_log, HasSubstr("Cannot open tape drive: /no/such/drive\n"));
}

TEST_F(SegyTape, AsksForFurtherTapesUntilTheOperatorRefuses) {
    ListedOperator present;
    SetTapePrompt(&present);
    present.deeds = {[&] {
                         folder.write("tape.tap", tape_file({8, 9}));
                     },
                     [&] { folder.write("tape.tap", filemark()); },
                     [&] { folder.write("tape.tap", tape_file({10})); }};
    read(tape_file({7}) + filemark() + filemark());
    EXPECT_EQ(ffids(), (std::vector{7, 8, 9, 10}));
    const std::string finished =
        "Tape finished.  To read another tape, insert it and click OK.  Otherwise, click Cancel. "
        "[OK|Cancel]\n";
    EXPECT_EQ(present.questions,
              finished + finished +
                  "No header on tape.  To read another tape, insert it and click READ.  Otherwise, "
                  "click QUIT. [READ|QUIT]\n" +
                  finished);
    EXPECT_THAT(job_log, HasSubstr("Last tape has been read!!!\n"));
}

TEST_F(SegyTape, EjectsAndWaitsForTheStacker) {
    struct Stacker final : TapeClock {
        long long now = 0;
        std::function<void()> load;
        long long NowMs() override { return now; }
        void SleepMs(int ms) override {
            now += ms;
            if (load && now >= 30'000) std::exchange(load, {})();
        }
    } stacker;
    SetTapeClock(&stacker);
    folder.write("tape.tap", tape_file({7}));
    stacker.load = [&] { folder.write("tape.tap", tape_file({8})); };
    TapeDevice device(
        image,
        [&](const Reporter& to) { return std::make_unique<ImageScsi>(image, TapeUse::kRead, to); },
        kTestReport);
    LogCapture capture;
    CaptureItem item;
    ASSERT_EQ(device.open(), 0);
    TapeChange change(item, device, 40, false);
    std::string begun;
    EXPECT_TRUE(change.next(kTapeFinished, kNoHeaderOnTape, [&] {
        EXPECT_EQ(device.skip_blocks(2), 0);
        EXPECT_GT(device.read_block(), 0);
        begun = text_of(device.block().subspan(8, 4));  // FFID
        return true;
    }));
    EXPECT_EQ(begun, std::string("\0\0\0\x08", 4));
    EXPECT_GE(stacker.now, 40'000);
    TapeChange of_image(item, device, 40, true);  // has no stacker, and nobody is there
    EXPECT_FALSE(of_image.next(kTapeFinished, kNoHeaderOnTape, [] { return true; }));
    SetTapeClock(nullptr);
}

TEST_F(SegyTape, OutputWritesABlockEachAndTwoFilemarks) {
    const std::string file =
        folder.write("in.sgy", small_segy(4000, 2, {{.ffid = 7, .samples = {1, -2}}}));
    LogCapture capture;
    {
        SegyDiskInput input({.lines = {"FILE=" + file}}, LogFlag::kQuiet);
        input.SetNext(std::make_unique<SegyTapeOutput>(FlowSection{.lines = {"OUTPUTFORMAT=0"}},
                                                       LogFlag::kLog));
        input.RunInput();
    }
    std::string expected = small_segy(4000, 2, {{.ffid = 7, .samples = {1, -2}}});
    expected[3223] = 2;                                               // the field's sample count
    expected[3603] = expected[3607] = 1;                              // TRNUML, TRNUMR
    expected[3715] = 2;                                               // NUMSAMPS
    expected[3716] = 0x0F, expected[3717] = static_cast<char>(0xA0);  // SAMPRATE 4000
    EXPECT_EQ(file_bytes(image), block(expected.substr(0, 3200)) +
                                     block(expected.substr(3200, 400)) +
                                     block(expected.substr(3600)) + filemark() + filemark());
    EXPECT_THAT(capture.text(),
                HasSubstr("SEG-Y Tape Output: Tape Input Device           = " + image +
                          "\nSEG-Y Tape Output: Output type = IEEE Floating Point\n"));

    // With data on the image and nobody to ask, the job ends and the image stays.
    const std::string before = file_bytes(image);
    SegyDiskInput input({.lines = {"FILE=" + file}}, LogFlag::kQuiet);
    input.SetNext(std::make_unique<SegyTapeOutput>(FlowSection{}, LogFlag::kQuiet));
    EXPECT_JOB_ERROR(input.RunInput(),
                     "Cannot write 'SEG Y EBCDIC Line Header' to file: " + image + "\n");
    EXPECT_EQ(file_bytes(image), before);
}

// What went through a tape is what went straight to disk.
TEST_F(SegyTape, RealTracesComeThroughATapeUnchanged) {
    const std::optional<std::string> marine = field_data("marine_shots.segy");
    if (!marine) GTEST_SKIP();
    LogCapture capture;
    const auto flow = [](std::unique_ptr<InputFlowItem> input, std::unique_ptr<FlowItem> output) {
        input->SetNext(std::move(output));
        input->RunInput();
    };
    const auto disk_input = [&] {
        return std::make_unique<SegyDiskInput>(FlowSection{.lines = {"FILE=" + *marine}},
                                               LogFlag::kQuiet);
    };
    const auto disk_output = [&](const char* name) {
        return std::make_unique<SegyDiskOutput>(
            FlowSection{.lines = {"OUTPUTFORMAT=1", "FILE=" + folder.file(name)}}, LogFlag::kQuiet);
    };
    flow(disk_input(), disk_output("straight.sgy"));
    flow(disk_input(), std::make_unique<SegyTapeOutput>(FlowSection{.lines = {"OUTPUTFORMAT=1"}},
                                                        LogFlag::kQuiet));
    flow(std::make_unique<SegyTapeInput>(FlowSection{}, LogFlag::kQuiet), disk_output("tape.sgy"));
    EXPECT_EQ(file_bytes(folder.file("tape.sgy")), file_bytes(folder.file("straight.sgy")));
    EXPECT_EQ(file_bytes(folder.file("tape.sgy")).size(), 1'270'800u);
}

TEST_F(SegyTape, WindowsNeedADeviceInTheConfiguration) {
    struct Host final : DialogHost {
        std::string said;
        bool IsUp(const FlowItem&) const override { return false; }
        void Open(ParameterDialog) override { said = "opened"; }
        void ShowMessage(const std::string& text) override { said = text; }
    } host;
    SetDialogHost(&host);
    LogCapture quiet;
    SegyTapeInput input(FlowSection{}, LogFlag::kQuiet);
    input.ShowInterface(nullptr, 0, 0, nullptr);
    EXPECT_EQ(host.said, "opened");
    CurrentConfig() = GlobalConfig();
    ASSERT_EQ(CurrentConfig().read(folder.file("halvern.cfg")), 0);
    input.ShowInterface(nullptr, 0, 0, nullptr);
    EXPECT_EQ(host.said, "There are no defined tape drives in your configuration file '" +
                             folder.file("halvern.cfg") + "'.");
    SetDialogHost(nullptr);
}

}  // namespace
}  // namespace halvern
