#include "tape/library_scsi.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "support/log_capture.h"
#include "tape/aspi.h"
#include "tape/tape_device.h"

namespace halvern {
namespace {

using testing_support::LogCapture;

TEST(TapeLibrary, IsReachedByNameThroughItsFunctions) {
    // The disk is passed over, the vendor cannot be read; 0x020501: path numbers 5 and 2.
    TapeDevice device(
        "???????? DLT8000 - 5_2",
        [](const Reporter& to) { return load_library_scsi(to, STAND_IN_LIBRARY); },
        testing_support::kTestReport);
    std::array<std::byte, 100> buffer{};
    ASSERT_EQ(device.read(buffer), 10);
    EXPECT_EQ(std::memcmp(buffer.data(), "ten  bytes", 10), 0);
    EXPECT_EQ(device.read(buffer), TapeDevice::kNoData);
    EXPECT_EQ(device.skip_files(3), 0);
    LogCapture log;
    EXPECT_EQ(device.write(buffer), TapeDevice::kFailed);
    EXPECT_EQ(log.text(), "Error Writing Tape..  Error Code = '9984' '2700'\n");
}

TEST(TapeLibrary, SaysWhatIsWrongWithIt) {
    LogCapture log;
    EXPECT_EQ(load_library_scsi(testing_support::kTestReport, "no-such-library"), nullptr);
    EXPECT_EQ(load_library_scsi(testing_support::kTestReport, STAND_IN_PART), nullptr);
    EXPECT_EQ(log.text(), "Can't find SEQSCSI.DLL!\nSEQSCSI.DLL error!\n");
}

TEST(AspiLayer, OpensSendsAndReports) {
    AspiLayer layer(testing_support::kTestReport);
    unsigned char request = 1;
    LogCapture log;
    EXPECT_EQ(layer.send(&request), -1);
    EXPECT_EQ(layer.open("no-such-library"), -1);
    EXPECT_EQ(layer.open(STAND_IN_PART), -1);
    EXPECT_EQ(log.text(),
              "aspi_open() not called?\nLoadLibrary WNASPI32.DLL failed!\n"
              "Failed to find ASPI functions in WNASPI32.DLL\n");
    ASSERT_EQ(layer.open(STAND_IN_LIBRARY), 0);
    EXPECT_EQ(layer.adapters(), 2);
    EXPECT_EQ(layer.send(&request), AspiLayer::kComplete);
}

// A drive's answer to reading 32768 bytes where there is a block of 10240 (residual 0x5800), and
// one to reading a damaged block; by the layout of fixed-format sense data.
TEST(Sense, IsParsedFromItsBytesAndNamed) {
    constexpr unsigned char kShort[18] = {0xF0, 0, 0x20, 0, 0, 0x58, 0, 10};
    constexpr unsigned char kMedium[18] = {0x70, 0, 0x43, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x11, 0x02};
    const auto parse = [](const unsigned char(&sense)[18]) {
        return SenseData::parse(std::as_bytes(std::span(sense)));
    };
    EXPECT_EQ(parse(kShort).residual, 0x5800);
    EXPECT_TRUE(parse(kShort).wrong_length);
    EXPECT_EQ(describe_sense(parse(kShort)), "SENSE CODE: NO SENSE, asc=0x0, ascq=0x0");
    EXPECT_TRUE(parse(kMedium).end_of_medium);
    LogCapture log;
    report_sense(parse(kMedium), testing_support::kTestReport);
    EXPECT_EQ(log.text(), "SENSE CODE: MEDIUM ERROR, asc=0x11, ascq=0x2\n");
    EXPECT_STREQ(sense_key_name(13), "VOLUME OVERFLOW");
    EXPECT_STREQ(sense_key_name(15), "RESERVED");
}

}  // namespace
}  // namespace halvern
