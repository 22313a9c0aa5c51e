#include "trace/codecs.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "trace/big_endian.h"
#include "trace/codec_kernels.h"

namespace halvern {
namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kLargest = std::numeric_limits<float>::max();
constexpr float kSmallest = std::numeric_limits<float>::denorm_min();

std::vector<std::byte> bytes(std::initializer_list<int> values) {
    std::vector<std::byte> made;
    for (const int value : values) made.push_back(static_cast<std::byte>(value));
    return made;
}

// The conversions as a person would do them, one bit at a time: normalise by shifting, give up
// digits by shifting. The codecs do neither.
std::uint32_t ieee_by_shifting(std::uint32_t w) {
    if (w == 0) return 0;
    std::uint32_t f = w & 0xFFFFFF;
    int e = static_cast<int>((w & 0x7F000000) >> 22) - 130;
    if (f != 0) {
        while (!(f & 0x800000)) {
            --e;
            f <<= 1;
        }
    }
    if (e >= 255) return (w & 0x80000000) | 0x7F7FFFFF;
    if (e > 0) return (w & 0x80000000) | static_cast<std::uint32_t>(e) << 23 | (f & 0x7FFFFF);
    return 0;
}
std::uint32_t ibm_by_shifting(std::uint32_t w) {
    if (w == 0) return 0;
    std::uint32_t f = (w & 0x7FFFFF) | 0x800000;
    int e = static_cast<int>((w & 0x7F800000) >> 23) - 126;
    while (e % 4 != 0) {
        ++e;
        f >>= 1;
    }
    return (w & 0x80000000) | static_cast<std::uint32_t>((e >> 2) + 64) << 24 | f;
}

/// Words of every class, as IBM and as IEEE: each exponent with the fractions at its edges, of both
/// signs (with the zeros, denormals, infinities and NaNs among them), and random ones.
std::vector<std::uint32_t> word_classes() {
    std::vector<std::uint32_t> words;
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent) {
        for (const std::uint32_t fraction :
             {0x000000u, 0x000001u, 0x0FFFFFu, 0x100000u, 0x123456u, 0x400000u, 0x7FFFFFu}) {
            for (const std::uint32_t sign : {0u, 0x80000000u}) {
                words.push_back(sign | exponent << 23 | fraction);                // IEEE
                words.push_back(sign | (exponent & 0x7F) << 24 | fraction << 1);  // IBM
            }
        }
    }
    std::mt19937 random(1);
    for (int i = 0; i < 20000; ++i) words.push_back(static_cast<std::uint32_t>(random()));
    return words;
}

// Worked by hand from sign, excess-64 power of 16 and 24-bit fraction: 0x64 / 256 * 16^2 = 100.
TEST(IbmFloat, WorkedWordsAndEdgesOfTheRange) {
    constexpr std::pair<std::uint32_t, float> kBothWays[] = {
        {0x00000000, 0.0f},      {0x42640000, 100.0f}, {0xC2640000, -100.0f},
        {0xC276A000, -118.625f}, {0x40800000, 0.5f},   {0x3F6F5C00, 0.027187347412109375f},
    };
    for (const auto& [ibm, value] : kBothWays) {
        EXPECT_EQ(decode_ibm(ibm), value) << std::hex << ibm;
        EXPECT_EQ(encode_ibm(value), ibm) << std::hex << ibm;
    }
    EXPECT_EQ(decode_ibm(0xFFFFFFFF), -kLargest);
    EXPECT_EQ(decode_ibm(0x61000000), kLargest);  // no fraction, but power 97 of 16
    EXPECT_EQ(std::bit_cast<std::uint32_t>(decode_ibm(0x80000000)), 0u);
    EXPECT_EQ(decode_ibm(0x41000000), 0x1p3f);     // 2^(4 x 65 - 130 - 127), by the exponent kept
    EXPECT_EQ(decode_ibm(0x21400000), 0x1p-126f);  // 0.25 x 16^-31, the smallest normal
    EXPECT_EQ(decode_ibm(0x21200000), 0.0f);       // half of it
    EXPECT_EQ(encode_ibm(-0.0f), 0xA1200000u);     // only a word of zeros is zero
    EXPECT_EQ(encode_ibm(0x1.FFFFFEp0f), 0x411FFFFFu);  // three bits cut, not rounded
}

TEST(IbmFloat, EveryClassOfWords) {
    for (const std::uint32_t word : word_classes()) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(decode_ibm(word)), ieee_by_shifting(word))
            << std::hex << word;
        ASSERT_EQ(encode_ibm(std::bit_cast<float>(word)), ibm_by_shifting(word))
            << std::hex << word;
    }
}

// A 16-bit sample as the words of its rule: times the scale, toward zero, held in 16 bits.
int int16_by_rule(float sample, float first, float second) {
    if (std::isnan(sample)) return 0;
    const double scaled = double{sample} * first * second;
    return scaled >= 32767 ? 32767 : scaled <= -32768 ? -32768 : static_cast<int>(scaled);
}

TEST(CodecKernels, EverySetOnEveryLengthAndAlignment) {
    const std::vector<std::uint32_t> words = word_classes();
    constexpr std::size_t kMost = 67;  // past two rounds of the widest loops, with every tail
    for (const CodecKernels* set : {&plain_codec_kernels(), avx2_codec_kernels()}) {
        if (set == nullptr) continue;  // not on this processor
        SCOPED_TRACE(set->name);
        std::size_t next = 0;
        for (std::size_t count = 0; count <= kMost; ++count) {
            for (std::size_t shift = 0; shift < 4; ++shift) {
                std::vector<std::byte> raw(4 * count + shift);
                std::vector<float> samples(count);
                for (std::size_t i = 0; i < count; ++i) {
                    const std::uint32_t word = words[next++ % words.size()];
                    put_u32(MutableBytes<4>(raw.data() + shift + 4 * i, 4), word);
                    samples[i] = std::bit_cast<float>(word);
                }
                const std::byte* in = raw.data() + shift;
                std::vector<float> decoded(count + 1, -1.0f);
                std::vector<std::byte> encoded(4 * count + shift + 1, std::byte{0xEE});
                std::byte* out = encoded.data() + shift;

                set->decode_ibm(in, decoded.data(), count);
                set->encode_ibm(samples.data(), out, count);
                for (std::size_t i = 0; i < count; ++i) {
                    const auto word = std::bit_cast<std::uint32_t>(samples[i]);
                    ASSERT_EQ(std::bit_cast<std::uint32_t>(decoded[i]), ieee_by_shifting(word));
                    ASSERT_EQ(get_u32(Bytes<4>(out + 4 * i, 4)), ibm_by_shifting(word));
                }
                set->swap_words(reinterpret_cast<const std::byte*>(samples.data()), out, count);
                ASSERT_TRUE(std::equal(in, in + 4 * count, out));

                const float first = 0x1p-40f, second = 0x1p10f;
                set->encode_int16(samples.data(), first, second, out, count);
                Magnitude expected;
                for (std::size_t i = 0; i < count; ++i) {
                    ASSERT_EQ(get_i16(Bytes<2>(out + 2 * i, 2)),
                              int16_by_rule(samples[i], first, second))
                        << samples[i];
                    if (std::isfinite(samples[i])) {
                        expected.largest = std::max(expected.largest, std::abs(samples[i]));
                    } else {
                        ++expected.not_finite;
                    }
                }
                const Magnitude magnitude = set->magnitude(samples.data(), count);
                ASSERT_EQ(magnitude.largest, expected.largest);
                ASSERT_EQ(magnitude.not_finite, expected.not_finite);

                set->decode_int16(in, 0.125f, decoded.data(), count);
                for (std::size_t i = 0; i < count; ++i) {
                    ASSERT_EQ(decoded[i], static_cast<float>(get_i16(Bytes<2>(in + 2 * i, 2))) / 8);
                }
                ASSERT_TRUE(decoded[count] == -1.0f && encoded.back() == std::byte{0xEE})
                    << "written past the end";
            }
        }
    }
}

// The scale doubles or halves the largest magnitude until it is within 16383.5 ... 32767.
TEST(Int16, ScalesByAPowerOfTwoAndTruncates) {
    struct Case {
        std::vector<float> samples;
        int weight;
        std::vector<int> stored;
        std::int64_t not_finite = 0;
    };
    const Case cases[] = {
        {{0, -0.0f, 0}, 0, {0, 0, 0}},
        {{}, 0, {}},
        {{1, -1, 0.25f}, 14, {16384, -16384, 4096}},
        {{32767, -16383.5f, 0.9f}, 0, {32767, -16383, 0}},
        {{-16383.5f}, 0, {-16383}},
        {{16383.25f, -1.9f}, 1, {32766, -3}},
        {{32768, -3}, -1, {16384, -1}},
        {{kSmallest, -kSmallest}, 163, {16384, -16384}},
        {{kLargest, 1}, -114, {16383, 0}},  // 2^128 - 2^104 is just over 32767 x 2^113
        {{kNan, kInfinity, -kInfinity, 2, -.5f}, 13, {0, 32767, -32768, 16384, -4096}, 3},
        {{kInfinity, kNan}, 0, {32767, 0}, 2},
    };
    for (const auto& [samples, weight, stored, not_finite] : cases) {
        std::vector<std::byte> raw(2 * samples.size());
        const Int16Encoding encoding = encode_int16(samples, raw);
        EXPECT_EQ(encoding.weight, weight);
        EXPECT_EQ(encoding.not_finite, not_finite);
        for (std::size_t i = 0; i < stored.size(); ++i) {
            EXPECT_EQ(get_i16(Bytes<2>(raw.data() + 2 * i, 2)), stored[i]) << "sample " << i;
        }
    }
}

TEST(Int16, DecodesWithScalesBeyondAFloatToo) {
    const auto raw = bytes({0x40, 0x00, 0x80, 0x00, 0x00, 0x00});  // 16384, -32768, 0
    const std::pair<double, std::vector<float>> cases[] = {
        {1.0, {16384, -32768, 0}},
        {0x1p-14, {1, -2, 0}},
        {0x1p-163, {0x1p-149f, -0x1p-148f, 0}},
        {0x1p200, {kInfinity, -kInfinity, 0}},
    };
    for (const auto& [scale, expected] : cases) {
        std::vector<float> samples(3);
        decode_int16(raw, scale, samples);
        EXPECT_EQ(samples, expected) << "scale " << scale;
    }
}

TEST(Segd8015, FourExponentsThenFourSignedMagnitudes) {
    const auto raw = bytes({
        0x01, 0x2F,  // exponents 0, 1, 2, 15
        0x40, 0x00,  // + 16384: 0.5
        0xC0, 0x00,  // - 16384: -0.5 x 2
        0x00, 0x01,  // 2^-15 x 4
        0x7F, 0xFF,  // 32767 / 32768 x 32768
        0x30, 0x00,  // the second group, of two samples: exponents 3, 0
        0x20, 0x00,  // 0.25 x 8
        0x80, 0x01,  // -2^-15
    });
    const std::vector<float> expected = {0.5f, -1, 0x1p-13f, 32767, 2, -0x1p-15f};
    std::vector<float> samples(6);
    decode_segd_8015(raw, 1.0, samples);
    EXPECT_EQ(samples, expected);
    decode_segd_8015(std::span(raw).first(15), 10.0, samples);  // cut within the last sample
    EXPECT_EQ(samples, (std::vector<float>{5, -10, 10 * 0x1p-13f, 327670, 20, 0}));
}

TEST(Segd, IntegersOf24BitsAndBase16FractionsBeyondTheIbmLimits) {
    const auto integers = bytes({0x40, 0x00, 0x00, 0xFF, 0xFF, 0xFF, 0x80, 0x00, 0x00, 0x00});
    std::vector<float> samples(4, -1.0f);
    decode_segd_8036(integers, 2.0, samples);
    EXPECT_EQ(samples, (std::vector<float>{0.5f, -0x1p-23f, -1, 0}));

    const auto fractions = bytes({0xC2, 0x64, 0x00, 0x00,    // -100
                                  0x41, 0x00, 0x00, 0x00,    // a zero fraction is 0
                                  0x20, 0x10, 0x00, 0x00});  // 16^-33 = 2^-132, a denormal float
    decode_segd_8048(fractions, 0.5, samples);
    EXPECT_EQ(samples, (std::vector<float>{-50, 0, 0x1p-133f, 0}));
}

}  // namespace
}  // namespace halvern
