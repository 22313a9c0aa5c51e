#include "segd/description.h"

#include <gtest/gtest.h>

#include "segd/record_bytes.h"

namespace halvern::segd {
namespace {

using namespace testing_support;

TEST(SegdDescription, ReadsValuesOfEveryType) {
    const std::string block = hex("12 34 56 78 FF FE 3F C0 00 00") + zeros(22);
    GroupBytes groups;
    groups[static_cast<std::size_t>(Group::kTE2)] = std::as_bytes(std::span(block));
    const std::pair<const char*, double> kEntries[] = {
        {"W TE2 1 U1", 0x12},       {"W TE2 1 U2", 0x1234},     {"W TE2 1 U3", 0x123456},
        {"W TE2 3 U4", 0x5678FFFE}, {"W TE2 5 I2", -2},         {"W TE2 5 U2", 0xFFFE},
        {"W TE2 5 I4", -114752},    {"W TE2 7 R4", 1.5},        {"W TE2 1 BCD2", 12},
        {"W TE2 1 BCD3", 234},      {"W TE2 1 BCD8", 12345678},  // I4: 0xFFFE3FC0
    };
    for (const auto& [line, value] : kEntries) {
        const auto entry = Transcription::parse(line);
        ASSERT_TRUE(entry) << line;
        EXPECT_EQ(entry->value(groups), value) << line;
    }
    EXPECT_EQ(Transcription::parse("W TE2 5 BCD2")->value(groups), std::nullopt);  // FF
    EXPECT_EQ(Transcription::parse("W G2 1 U1")->value(groups), std::nullopt);     // not there
}

TEST(SegdDescription, RefusesWhatIsNoEntry) {
    for (const char* line : {"W", "W G1 1", "W G9 1 U1", "W G1 0 U1", "W G1 -1 U1", "W G1 x U1",
                             "W G1 32 U2", "W TH 20 BCD3", "W G1 1 U5", "W G1 1 BCD9",
                             "W G1 1 BCD1", "W G1 1 U1 more", "W G1 99999999999 U1"}) {
        EXPECT_FALSE(Transcription::parse(line)) << line;
    }
    EXPECT_TRUE(Transcription::parse("W XTN 4000 U4"));
    EXPECT_TRUE(Transcription::parse("W TH 20 BCD2"));
}

}  // namespace
}  // namespace halvern::segd
