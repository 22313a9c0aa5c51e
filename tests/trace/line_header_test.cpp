#include "trace/line_header.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "support/log_capture.h"
#include "support/temporary_folder.h"
#include "trace/big_endian.h"
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

TEST(SampleInterval, DropsWhatIsNoWholeUnit) {
    constexpr auto kInterval = SampleInterval::of_us(2500);
    EXPECT_EQ(kInterval.internal(), 160'000);
    EXPECT_EQ(kInterval.ms(), 2.5);
    EXPECT_EQ(kInterval.whole_ms(), 2);
    EXPECT_FALSE(kInterval.is_whole_ms());
    EXPECT_EQ(kInterval.samples_in(9), 3);
    EXPECT_EQ(SampleInterval::of_ms(1).samples_in(2'000'000'000), 2'000'000'000);
    EXPECT_FALSE(SampleInterval());
}

TEST(LineHeader, FieldsLieWhereSegYHasThem) {
    LineHeader header;
    header.set_sample_interval(SampleInterval(40'000 * 64 + 63));  // drops the part of a us
    header.set_samples(1500, 1501);
    header.set_format(SampleFormat::kSegd8036);
    const auto b = header.bytes();
    const auto field = [&](std::size_t at) { return get_u16(Bytes<2>(b.data() + at, 2)); };
    EXPECT_EQ(field(3216), 40'000);
    EXPECT_EQ(field(3220), 1500);
    EXPECT_EQ(field(3222), 1501);
    EXPECT_EQ(field(3224), 1);
    EXPECT_EQ(header.sample_interval().internal(), 40'000 * 64);
    b[3220] = std::byte{0xFF};
    EXPECT_EQ(header.samples(), -36);  // intervals are unsigned, counts are signed
    const std::pair<int, SampleFormat> kRead[] = {{1, SampleFormat::kIbm},
                                                  {3, SampleFormat::kInt16},
                                                  {5, SampleFormat::kIeee},
                                                  {2, SampleFormat::kIeee}};
    for (const auto& [code, format] : kRead) {
        b[3225] = static_cast<std::byte>(code);
        EXPECT_EQ(header.format(), format) << "code " << code;
    }
}

TEST(LineHeader, ListsADefinitionFiveSlotsALine) {
    testing_support::TemporaryFolder folder;
    std::string words;
    for (const char* word : {"FFID       8 1", "TRACEID   28 0", "A        212 2", "B         30 7",
                             "WIDE     -2000000000 1", "SIXTH      4 1"}) {
        words += std::string(51, ' ') + word + '\n';
    }
    LineHeader header;
    header.bytes()[3599] = std::byte{1};
    header.build_from_definition(folder.write("words", words), SampleInterval::of_ms(4), 100,
                                 SampleFormat::kIbm);
    EXPECT_EQ(text_line(header, 0),
              "    FFID   8 I4  TRACEID  28 I2        A 212 R4        B  30 R4     WIDE -20000 ");
    EXPECT_EQ(text_line(header, 1), "   SIXTH   4 I4 " + std::string(64, ' '));
    EXPECT_EQ(header.sample_interval().internal(), 256'000);
    EXPECT_TRUE(header.samples() == 100 && header.field_samples() == 100);
    EXPECT_EQ(header.format(), SampleFormat::kIbm);
    EXPECT_EQ(header.bytes()[3599], std::byte{0});
}

TEST(LineHeader, ListsAtMostTheWordsThatFit) {
    testing_support::TemporaryFolder folder;
    std::string words;
    for (int i = 0; i < 1000; ++i) words += std::string(51, ' ') + "W          8 1\n";
    LineHeader header;
    header.build_from_definition(folder.write("words", words), SampleInterval::of_us(1), 1,
                                 SampleFormat::kIeee);
    EXPECT_EQ(text_line(header, 39).substr(64), "       W   8 I4 ");
    EXPECT_EQ(header.bytes()[3200], std::byte{0});

    testing_support::LogCapture quiet;
    header.build_from_definition(folder.file("missing"), SampleInterval::of_us(1), 1,
                                 SampleFormat::kIeee);
    EXPECT_EQ(text_line(header, 0), std::string(80, ' '));
}

TEST(Ebcdic, EveryCodeAsDdConvertsIt) {
    testing_support::TemporaryFolder folder;
    std::string codes;
    for (int code = 0; code < 256; ++code) codes += static_cast<char>(code);
    const std::string dd = "dd 2>/dev/null if=" + folder.write("in", codes) + " of=";
    for (const bool to_ebcdic : {true, false}) {
        const std::string out = folder.file("out");
        if (std::system((dd + out + (to_ebcdic ? " conv=ebcdic" : " conv=ascii")).c_str()) != 0) {
            GTEST_SKIP() << "no dd here";
        }
        std::vector<std::byte> text(256);
        std::ranges::copy(std::as_bytes(std::span(codes)), text.begin());
        to_ebcdic ? ascii_to_ebcdic(text, text) : ebcdic_to_ascii(text, text);  // in place
        const std::string expected = testing_support::file_bytes(out);
        EXPECT_TRUE(std::ranges::equal(text, std::as_bytes(std::span(expected)))) << to_ebcdic;
    }
}

}  // namespace
}  // namespace halvern
