#include "trace/line_header.h"

#include <gtest/gtest.h>

#include <string>

#include "support/log_capture.h"
#include "support/temporary_folder.h"
#include "trace/ebcdic.h"

namespace halvern {
namespace {

std::string text_line(const LineHeader& header, int line) {
    std::string text;
    for (const std::byte code : header.bytes().subspan(static_cast<std::size_t>(line) * 80, 80)) {
        text += static_cast<char>(ebcdic_to_ascii(code));
    }
    return text;
}

TEST(LineHeader, FieldsLieWhereSegYHasThem) {
    LineHeader header;
    header.set_sample_interval(128'000);  // 2000 us
    header.set_samples(1500, 1501);
    header.set_format(SampleFormat::kInt16);
    const auto b = header.bytes();
    EXPECT_EQ(b[3216], std::byte{0x07});
    EXPECT_EQ(b[3217], std::byte{0xD0});
    EXPECT_EQ(b[3220], std::byte{0x05});
    EXPECT_EQ(b[3221], std::byte{0xDC});
    EXPECT_EQ(b[3223], std::byte{0xDD});
    EXPECT_EQ(b[3225], std::byte{0x03});
    EXPECT_EQ(header.sample_interval(), 128'000);
    EXPECT_EQ(header.samples(), 1500);
    EXPECT_EQ(header.field_samples(), 1501);
}

TEST(LineHeader, IntervalsAreUnsignedCountsAreSigned) {
    LineHeader header;
    header.set_sample_interval(40'000 * 64 + 63);  // the part of a microsecond is dropped
    EXPECT_EQ(header.sample_interval(), 40'000 * 64);
    header.bytes()[3220] = std::byte{0xFF};
    header.bytes()[3221] = std::byte{0xFE};
    EXPECT_EQ(header.samples(), -2);
}

TEST(LineHeader, FormatCodes) {
    const std::pair<int, SampleFormat> kRead[] = {
        {1, SampleFormat::kIbm},  {3, SampleFormat::kInt16}, {5, SampleFormat::kIeee},
        {2, SampleFormat::kIeee}, {0, SampleFormat::kIeee},
    };
    for (const auto& [code, format] : kRead) {
        LineHeader header;
        header.bytes()[3225] = static_cast<std::byte>(code);
        EXPECT_EQ(header.format(), format) << "code " << code;
        EXPECT_EQ(header.format_code(), code);
    }
    const std::pair<SampleFormat, int> kWritten[] = {
        {SampleFormat::kIeee, 5}, {SampleFormat::kIbm, 1}, {SampleFormat::kSegd8036, 1}};
    for (const auto& [format, code] : kWritten) {
        LineHeader header;
        header.set_format(format);
        EXPECT_EQ(header.format_code(), code);
    }
}

TEST(LineHeader, ListsADefinitionFiveSlotsALine) {
    testing_support::TemporaryFolder folder;
    std::string words;
    const std::string blanks(51, ' ');
    words +=
        blanks + "FFID       8 1\n" + blanks + "TRACEID   28 0\n" + blanks + "A        212 2\n";
    words += blanks + "B         30 7\n" + blanks + "WIDE     -2000000000 1\n" + blanks +
             "SIXTH      4 1\n";
    LineHeader header;
    header.bytes()[3599] = std::byte{1};
    header.build_from_definition(folder.write("words", words), 256'000, 100, SampleFormat::kIbm);
    EXPECT_EQ(text_line(header, 0),
              "    FFID   8 I4  TRACEID  28 I2        A 212 R4        B  30 R4     WIDE -20000 ");
    EXPECT_EQ(text_line(header, 1), "   SIXTH   4 I4 " + std::string(64, ' '));
    EXPECT_EQ(text_line(header, 39), std::string(80, ' '));
    EXPECT_EQ(header.sample_interval(), 256'000);
    EXPECT_EQ(header.samples(), 100);
    EXPECT_EQ(header.field_samples(), 100);
    EXPECT_EQ(header.format(), SampleFormat::kIbm);
    EXPECT_EQ(header.bytes()[3599], std::byte{0});
}

TEST(LineHeader, ListsAtMostTheWordsThatFit) {
    testing_support::TemporaryFolder folder;
    std::string words;
    for (int i = 0; i < 1000; ++i) words += std::string(51, ' ') + "W          8 1\n";
    LineHeader header;
    header.build_from_definition(folder.write("words", words), 64, 1, SampleFormat::kIeee);
    EXPECT_EQ(text_line(header, 39).substr(64), "       W   8 I4 ");
    EXPECT_EQ(header.bytes()[3200], std::byte{0});

    testing_support::LogCapture log;
    header.build_from_definition(folder.file("missing"), 64, 1, SampleFormat::kIeee);
    EXPECT_EQ(text_line(header, 0), std::string(80, ' '));
    EXPECT_EQ(header.samples(), 1);
}

}  // namespace
}  // namespace halvern
