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

// What no float can hold is 0: here 16 to the power 63, NaN and infinity.
TEST(SegdSamples, DecodeTimesDescale) {
    const Encoded kCases[] = {
        {8048, "FFFFFFFF 7FFFFFFF 41100000", 1, {0, 0, 1}},
        {8058, "3F800000 C0490FDB", 2, {2.0f, -6.2831854820251465f}},
        {8058, "FFFFFFFF 7F800000 3F800000 40", 1, {0, 0, 1, 0}},  // and cut
        {8058, "7F7FFFFF FF7FFFFF", 2, {0, 0}},
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
