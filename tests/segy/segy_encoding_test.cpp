#include "segy/segy_layout.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "flow/record_encoder.h"
#include "segy/segy_bytes.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

using namespace testing_support;

class SegyEncoding : public testing::Test {
protected:
    SegyEncoding() {
        EXPECT_EQ(definition_.load(HALVERN_SOURCE_DIR "/header/default"), 0);
        definition_.attach(image_.data());
    }
    /// The record of a trace of these samples, numbered from `traces_before` on, at 2 ms.
    std::string encode(std::vector<float> samples, SampleFormat format, int count,
                       std::int64_t traces_before = 0) {
        RecordEncoder encoder(reports_, definition_, format, count, SampleInterval::of_ms(2),
                              traces_before);
        TraceSamples trace;
        trace.set_floats(std::move(samples));
        std::string bytes;
        for (const std::byte byte : encoder.encode(definition_, trace)) {
            bytes += static_cast<char>(byte);
        }
        EXPECT_EQ(bytes.size(), static_cast<std::size_t>(encoder.record_bytes()));
        not_finite_ = encoder.not_finite();
        return bytes;
    }

    TraceHeaderDefinition definition_;
    std::array<std::byte, kTraceHeaderBytes> image_{};
    std::int64_t not_finite_ = 0;
    CollectedReports reports_;
};

// By hand. IBM: 100 = 0x64 / 256 * 16^2, -0.5 = -(0x80 / 256). 16 bits: the largest magnitude, 100,
// doubles 8 times to 25600 (9 times would pass 32767): 100 -> 0x6400, -0.5 -> -128. The third
// sample is cut off.
TEST_F(SegyEncoding, RecordsByHandInThreeFormats) {
    const auto stamped = [](int weight) {
        return std::vector<TraceField>{
            {0, 4, 8}, {4, 4, 8}, {114, 2, 2}, {116, 2, 2000}, {168, 2, weight}};
    };
    EXPECT_EQ(encode({100, -.5f, 9}, SampleFormat::kIeee, 2, 7),
              record_bytes(stamped(0), 4, {0x42C80000, 0xBF000000}));
    EXPECT_EQ(encode({100, -.5f, 9}, SampleFormat::kIbm, 2, 7),
              record_bytes(stamped(0), 4, {0x42640000, 0xC0800000}));
    EXPECT_EQ(encode({100, -.5f, 9}, SampleFormat::kInt16, 2, 7),
              record_bytes(stamped(8), 2, {0x6400, 0xFF80}));
}

TEST_F(SegyEncoding, SaysOnceThatTheNumbersOutgrowTheirWords) {
    RecordEncoder encoder(reports_, definition_, SampleFormat::kIeee, 1, SampleInterval::of_ms(1),
                          2'147'483'646);
    TraceSamples trace;
    trace.set_floats(std::vector<float>{1});
    encoder.encode(definition_, trace);
    EXPECT_TRUE(reports_.entries().empty());
    encoder.encode(definition_, trace);
    encoder.encode(definition_, trace);
    EXPECT_EQ(reports_.of(Weight::kWarning).size(), 1u);
}

TEST_F(SegyEncoding, LineHeaderKeepsTextAndLosesWhatHeldForItsOldFileOnly) {
    std::string bytes = header_bytes(
        {.interval_us = 4000, .samples = 9, .code = 2, .revision = 0x0200, .text_headers = 3});
    bytes.replace(0, 4, "\xC3\x40\xF1\x40");
    put_big_endian(bytes, 3212, 2, 24);     // traces per ensemble
    put_big_endian(bytes, 3268, 4, 9);      // revision 2: samples per trace
    put_big_endian(bytes, 3524, 4, 13200);  // revision 2: offset of the first trace, low half
    LineHeader line;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        line.bytes()[i] = static_cast<std::byte>(bytes[i]);

    LineHeader output = segy_output_line(line, SampleFormat::kInt16, 5, SampleInterval::of_ms(2));
    std::string expected = header_bytes(
        {.interval_us = 2000, .samples = 5, .field_samples = 5, .code = 3, .revision = 0x0200});
    expected.replace(0, 4, "\xC3\x40\xF1\x40");
    put_big_endian(expected, 3212, 2, 24);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(output.bytes()[i], static_cast<std::byte>(expected[i])) << "byte " << i;
    }
}

}  // namespace
}  // namespace halvern
