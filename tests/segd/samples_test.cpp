#include "segd/samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "segd/record_bytes.h"

namespace halvern::segd {
namespace {

using namespace testing_support;

struct Encoded {
    int format;
    const char* bytes;
    double descale;
    std::vector<float> expected;
};

// Worked by hand from the layouts: 8015 mantissa / 32768 x 2^exponent (exponents 0, 1, 15, 3); 8036
// integer / 2^24; 8048 sign, excess-64 power of 16, 24-bit fraction.
TEST(SegdSamples, DecodeTimesDescale) {
    const Encoded kCases[] = {
        {8015, "01F3 4000 C000 7FFF 8001", 1, {0.5f, -1.0f, 32767.0f, -0.000244140625f}},
        {8015, "0000 4000", 4, {2.0f, 0.0f}},  // a group that was cut
        {8036, "000001 FFFFFF 400000 800000", 1, {0x1p-24f, -0x1p-24f, 0.25f, -0.5f}},
        {8048,
         "41100000 42640000 C0800000 4518 6A00 00000000",
         0.5,
         {0.5f, 50.0f, -0.25f, 50000.0f, 0.0f}},
        {8058, "3F800000 C0490FDB", 2, {2.0f, -6.2831854820251465f}},
        {8058, "FFFFFFFF 7F800000 3F800000 40", 1, {0, 0, 1, 0}},  // NaN, infinity, cut
    };
    for (const Encoded& encoded : kCases) {
        SCOPED_TRACE(encoded.bytes);
        const std::string raw = hex(encoded.bytes);
        std::vector<float> samples(encoded.expected.size(), NAN);
        decode(encoded.format, std::as_bytes(std::span(raw)), encoded.descale, samples);
        EXPECT_EQ(samples, encoded.expected);
    }
}

TEST(SegdSamples, TakeTheBytesOfTheirFormat) {
    EXPECT_EQ(bytes_of(8015, 9), 30);
    EXPECT_EQ(bytes_of(8015, 9, true), 24);  // two groups of 10, then exponents and one word
    EXPECT_EQ(samples_in(8015, 24), 9);
    EXPECT_EQ(samples_in(8015, 22), 8);
    EXPECT_EQ(bytes_of(8036, 5), 15);
    EXPECT_EQ(samples_in(8036, 16), 5);
    EXPECT_EQ(bytes_of(8058, 4001), 16004);
    EXPECT_FALSE(is_readable(8022) || is_readable(58));
}

}  // namespace
}  // namespace halvern::segd
