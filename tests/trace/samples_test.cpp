#include "trace/samples.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "support/job_end.h"
#include "support/temporary_folder.h"
#include "trace/big_endian.h"

namespace halvern {
namespace {

using Floats = std::vector<float>;

/// A definition with WEIGHT alone, and one without any word, on one image.
class Samples : public testing::Test {
protected:
    void SetUp() override {
        const std::string weight = std::string(51, ' ') + "WEIGHT   168 0\n";
        ASSERT_EQ(definition.load(folder.write("weight", weight)), 0);
        ASSERT_EQ(no_words.load(folder.write("none", "")), 0);
    }

    static std::vector<std::byte> ieee(const Floats& samples) {
        std::vector<std::byte> raw(samples.size() * 4);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            put_f32(MutableBytes<4>(raw.data() + 4 * i, 4), samples[i]);
        }
        return raw;
    }
    Floats floats() {
        const std::span<float> found = samples.floats(definition);
        return {found.begin(), found.end()};
    }
    std::vector<std::byte> written(SampleFormat target, int count) {
        std::vector<std::byte> raw(static_cast<std::size_t>(count * bytes_per_sample(target)),
                                   std::byte{0xEE});
        samples.to_format(definition, target, raw, count);
        return raw;
    }

    testing_support::TemporaryFolder folder;
    std::array<std::byte, kTraceHeaderBytes> image{};
    TraceHeaderDefinition definition{image.data()};
    TraceHeaderDefinition no_words{image.data()};
    TraceSamples samples;
};

TEST_F(Samples, WhatIsNotStoredCountsAsZero) {
    const auto raw = ieee({1, -2, 3, 4});
    samples.set_raw(raw, 3, 5, 9, SampleFormat::kIeee);
    EXPECT_EQ(floats(), (Floats{1, -2, 3, 0, 0}));
    EXPECT_EQ(written(SampleFormat::kIeee, 7), ieee({1, -2, 3, 0, 0, 0, 0}));
    EXPECT_EQ(written(SampleFormat::kIeee, 2), ieee({1, -2}));
    EXPECT_TRUE(written(SampleFormat::kIeee, 0).empty());
}

TEST_F(Samples, CountsAreHeldWithinTheRecord) {
    struct Case {
        std::size_t bytes;
        int stored, nominal;
        SampleFormat format;
        int expected;
    };
    const Case cases[] = {
        {20, -5, 3, SampleFormat::kIeee, 0},       {20, 9, 3, SampleFormat::kIbm, 3},
        {20, 9, 100, SampleFormat::kIeee, 5},      {20, 99, 100, SampleFormat::kInt16, 10},
        {20, 99, 100, SampleFormat::kSegd8036, 6}, {20, 99, 100, SampleFormat::kSegd8015, 8},
        {15, 9, 9, SampleFormat::kSegd8015, 5},  // exponents and one of two behind a whole group
        {20, 5, -1, SampleFormat::kIeee, 0},
    };
    for (const Case& c : cases) {
        const std::vector<std::byte> raw(c.bytes);
        samples.set_raw(raw, c.stored, c.nominal, 0, c.format);
        EXPECT_EQ(samples.stored_count(), c.expected);
        EXPECT_EQ(floats().size(), static_cast<std::size_t>(samples.nominal_count()));
    }
}

// NaN payloads and IBM words that are not normalised do not survive a conversion.
TEST_F(Samples, AnUntouchedRecordIsCopiedByteForByte) {
    std::vector<std::byte> odd(8);
    put_u32(std::span(odd).first<4>(), 0x7FA01234);
    put_u32(std::span(odd).last<4>(), 0x42000001);
    for (const SampleFormat format : {SampleFormat::kIeee, SampleFormat::kIbm}) {
        samples.set_raw(odd, 2, 2, 0, format);
        floats();  // looking is not touching
        EXPECT_EQ(written(format, 2), odd);
    }
    samples.set_floats(samples.floats(definition));
    EXPECT_FALSE(samples.raw_valid());
    EXPECT_NE(written(SampleFormat::kIbm, 2), odd);
}

TEST_F(Samples, WorkedFloatsReplaceTheRecord) {
    const auto raw = ieee({1, 2, 3});
    samples.set_raw(raw, 2, 3, 0, SampleFormat::kIeee);
    const std::span<float> worked = samples.floats(definition);
    for (float& sample : worked) sample += 10;
    samples.set_floats(worked);
    EXPECT_EQ(written(SampleFormat::kIeee, 3), ieee({11, 12, 0}));  // 2 are stored

    Floats other = {5, 6, 7};
    samples.set_raw(raw, 3, 3, 0, SampleFormat::kIeee);
    samples.set_floats(std::span(other));
    other[0] = 99;  // a copy was taken
    EXPECT_EQ(written(SampleFormat::kIeee, 3), ieee({5, 6, 7}));

    samples.set_floats(Floats{1, 2, 3, 4, 5});
    EXPECT_EQ(samples.stored_count(), 5);
    EXPECT_EQ(floats(), (Floats{1, 2, 3, 4, 5}));

    samples.set_raw(raw, 3, 3, 0, SampleFormat::kIeee);  // a new record forgets all of it
    EXPECT_EQ(floats(), (Floats{1, 2, 3}));
}

TEST_F(Samples, IntegersCarryTheirScaleInTheHeader) {
    samples.set_floats(Floats{1, -0.5f, 0});
    const auto raw = written(SampleFormat::kInt16, 3);
    EXPECT_EQ(definition.get_int(0), 14);
    // As written; another trace, larger; damaged: zeros stay zeros.
    for (const int weight : {14, -3, -32768}) {
        definition.set_double(0, weight);
        samples.set_raw(raw, 3, 3, 0, SampleFormat::kInt16);
        const float one = std::ldexp(1.0f, 14 - weight);
        EXPECT_EQ(floats(), (Floats{one, -one / 2, 0})) << weight;
    }
    samples.set_floats(Floats{INFINITY, 1, -INFINITY});
    std::vector<std::byte> out(6);
    EXPECT_EQ(samples.to_format(definition, SampleFormat::kInt16, out, 3), 2);
}

// A sort behind a 16-bit output keeps records: it must not keep the old one beside the new weight.
TEST_F(Samples, IntegersThatWereWrittenLeaveTheirOldRecord) {
    const std::vector<std::byte> raw = {std::byte{0}, std::byte{100}};
    samples.set_raw(raw, 1, 1, 0, SampleFormat::kInt16);
    EXPECT_NE(written(SampleFormat::kInt16, 1), raw);
    EXPECT_FALSE(samples.raw_valid());
    EXPECT_EQ(floats(), Floats{100});
}

TEST_F(Samples, IntegersWithoutWeightEndTheJob) {
    constexpr const char* kWords = "Cannot convert INT16 trace data without header word 'WEIGHT'\n";
    const std::vector<std::byte> raw(4);
    samples.set_raw(raw, 2, 2, 0, SampleFormat::kInt16);
    floats();  // this definition has it, the next has not
    samples.set_raw(raw, 2, 2, 0, SampleFormat::kInt16);
    EXPECT_JOB_ERROR(samples.floats(no_words), kWords);
    std::vector<std::byte> out(4);
    samples.set_floats(Floats{1, 2});
    EXPECT_JOB_ERROR(samples.to_format(no_words, SampleFormat::kInt16, out, 2), kWords);
}

}  // namespace
}  // namespace halvern
