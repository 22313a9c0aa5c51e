#include "segd/description.h"

#include <gtest/gtest.h>

#include "segd/record_bytes.h"
#include "support/temporary_folder.h"

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

TEST(SegdDescription, FileKeepsGoodEntriesAndNamesBadOnes) {
    const TemporaryFolder folder;
    TraceHeaderDefinition definition;
    ASSERT_EQ(definition.load(HALVERN_SOURCE_DIR "/header/default"), 0);
    const std::string path = folder.write("Halvern.segd",
                                          "# shot\n"
                                          "\n"
                                          "FFID G1 1 BCD4  # file number\r\n"
                                          "CHAN\tTH\t5\tBCD4\n"
                                          "ffid G1 1 BCD4\n"
                                          "CHAN TH 5\n");
    const Description description = Description::read(path, definition);
    EXPECT_TRUE(description.found);
    ASSERT_EQ(description.entries.size(), 2u);
    EXPECT_EQ(description.problems,
              (std::vector<std::string>{
                  "Invalid SEGD transcription code (SEGY header word invalid): 'ffid G1 1 BCD4'\n",
                  "Invalid SEGD transcription code: 'CHAN TH 5'\n"}));
    EXPECT_FALSE(Description::read(folder.file("none"), definition).found);

    std::array<std::byte, 240> image{};
    definition.attach(image.data());
    const std::string general = hex("0427") + zeros(30);
    GroupBytes groups;
    groups[static_cast<std::size_t>(Group::kG1)] = std::as_bytes(std::span(general));
    description.apply(groups, definition);
    EXPECT_EQ(definition.get_int(definition.find("FFID")), 427);
    EXPECT_EQ(definition.get_int(definition.find("CHAN")), 0);
}

}  // namespace
}  // namespace halvern::segd
