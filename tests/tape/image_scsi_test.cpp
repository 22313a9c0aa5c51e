#include "tape/image_scsi.h"

#include <gtest/gtest.h>

#include <array>

#include "support/log_capture.h"
#include "support/temporary_folder.h"
#include "tape/image_bytes.h"
#include "tape/tape_device.h"
#include "tape/tape_prompt.h"

namespace halvern {
namespace {

using namespace testing_support;

TapeDevice image_device(const std::string& path, TapeUse use) {
    return {path,
            [path, use](const Reporter& to) { return std::make_unique<ImageScsi>(path, use, to); },
            kTestReport};
}

// Blocks as text, "|" for no data, "E" for an error.
std::string read(TapeDevice& device) {
    const int count = device.read_block();
    return count > 0 ? text_of(device.block()) : count == TapeDevice::kNoData ? "|" : "E";
}

TEST(ImageDevice, ReadsBlocksFilemarksAndTheEnd) {
    const TemporaryFolder folder;
    const std::string path =
        folder.write("tape.tap", block("abc") + filemark() + block("de") + block("f") + filemark());
    TapeDevice device = image_device(path, TapeUse::kRead);
    ASSERT_EQ(device.open(), 0);
    for (const char* expected : {"abc", "|", "de", "f", "|", "|", "|"})
        EXPECT_EQ(read(device), expected);
    ASSERT_EQ(device.rewind(), 0);
    EXPECT_EQ(device.skip_files(1), 0);
    EXPECT_EQ(device.skip_blocks(1), 0);
    EXPECT_EQ(read(device), "f");
    ASSERT_EQ(device.rewind(), 0);
    LogCapture log;
    EXPECT_EQ(device.skip_blocks(2), TapeDevice::kNoData);  // stops after the filemark
    EXPECT_EQ(read(device), "de");
    EXPECT_EQ(device.skip_files(2), -1);
    EXPECT_EQ(log.text(), "Error Spacing Tape..  Error Code = '5' '5'\n");

    std::array<std::byte, 2> small{};
    ASSERT_EQ(device.rewind(), 0);
    EXPECT_EQ(device.read(small), 2);  // the block is cut to the buffer, and passed
    EXPECT_EQ(read(device), "|");
}

TEST(ImageDevice, ABadBlockStaysInFrontUntilItIsSkipped) {
    const TemporaryFolder folder;
    const std::string path = folder.write(
        "tape.tap", block("ab") + block("xx", 0x80000000) + block("cd") + word(9) + "cut");
    TapeDevice device = image_device(path, TapeUse::kRead);
    EXPECT_EQ(read(device), "ab");
    LogCapture log;
    EXPECT_EQ(read(device), "E");
    EXPECT_EQ(read(device), "E");
    EXPECT_EQ(device.skip_blocks(1), 0);
    EXPECT_EQ(read(device), "cd");
    EXPECT_EQ(read(device), "E");
    EXPECT_EQ(device.skip_blocks(1), TapeDevice::kFailed);
    const std::string damaged =
        "Tape image '" + path + "' is damaged: the record at byte 30 is cut short.\n";
    const std::size_t said = log.text().find(damaged);
    ASSERT_NE(said, std::string::npos) << log.text();
    EXPECT_EQ(log.text().find(damaged, said + 1), std::string::npos) << "said more than once";
}

TEST(ImageDevice, DataIsWrittenOverOnlyWhenTheOperatorAgrees) {
    struct Operator final : TapePrompt {
        bool agrees = false;
        std::string asked;
        bool Ask(const TapeQuestion& question) override {
            asked = question.text;
            return agrees;
        }
    } present;
    const TemporaryFolder folder;
    const std::string bytes = block("abc") + filemark();
    const std::string path = folder.write("tape.tap", bytes);
    const auto write = [&] {
        TapeDevice device = image_device(path, TapeUse::kWrite);
        return device.write(bytes_of("new"));
    };
    LogCapture log;
    EXPECT_EQ(write(), TapeDevice::kFailed);  // nobody to ask
    SetTapePrompt(&present);
    EXPECT_EQ(write(), TapeDevice::kFailed);
    EXPECT_EQ(file_bytes(path), bytes);
    EXPECT_NE(log.text().find("Tape image '" + path + "' holds data and is not written over.\n"),
              std::string::npos);
    EXPECT_NE(present.asked.find(path), std::string::npos);
    present.agrees = true;
    EXPECT_EQ(write(), 0);
    EXPECT_EQ(file_bytes(path), block("new"));
    SetTapePrompt(nullptr);
}

}  // namespace
}  // namespace halvern
