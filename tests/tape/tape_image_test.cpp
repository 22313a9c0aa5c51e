#include "tape/tape_image.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/temporary_folder.h"
#include "tape/image_bytes.h"

namespace halvern {
namespace {

using namespace testing_support;

// One letter a record: b(data), x(data) for a bad block, f filemark, "." end of data, "!" fault.
std::string contents(const std::string& path) {
    std::optional<TapeImageReader> reader = TapeImageReader::open(path);
    if (!reader) return "unreadable";
    for (std::string text;;) {
        const TapeImageRecord record = reader->next();
        switch (record.item) {
            case TapeImageItem::kBlock:
                text += "b(" + text_of(record.data) + ")";
                break;
            case TapeImageItem::kBadBlock:
                text += "x(" + text_of(record.data) + ")";
                break;
            case TapeImageItem::kFilemark:
                text += "f";
                break;
            case TapeImageItem::kEndOfData:
                return text + ".";
            case TapeImageItem::kFault:
                return text + "! " + reader->fault();
        }
    }
}

struct Image {
    const char* name;
    std::string bytes;
    const char* expected;
};
class TapeImageContents : public testing::TestWithParam<Image> {};

TEST_P(TapeImageContents, AreRead) {
    const TemporaryFolder folder;
    EXPECT_EQ(contents(folder.write("tape.tap", GetParam().bytes)), GetParam().expected);
}

const std::string kUnpadded = word(3) + "abc" + word(3);
// Laid out by hand from the format's published description.
INSTANTIATE_TEST_SUITE_P(
    ByHand, TapeImageContents,
    testing::Values(
        Image{"Empty", "", "."},
        Image{"OddBlocksArePadded", block("abc") + block("de") + filemark(), "b(abc)b(de)f."},
        Image{"OrNot", kUnpadded + block("de") + kUnpadded, "b(abc)b(de)b(abc)."},
        Image{"EndOfMediumEndsTheData", filemark() + word(0xFFFFFFFF) + block("ab"), "f."},
        Image{"GapsArePassed",
              word(0xFFFFFFFE) + block("ab") + word(0xFFFEFFFF).substr(0, 2) + word(0xFFFFFFFE) +
                  filemark(),
              "b(ab)f."},
        Image{"BadBlocks", block("ab", 0x80000000) + word(0x80000000) + block("cd"),
              "x(ab)x()b(cd)."},
        Image{"PrivateRecordsArePassed",
              block("me", 0x10000000) + word(0x70000007) + block("info", 0xE0000000) + block("ab"),
              "b(ab)."},
        Image{"CutWord", block("ab") + "\1", "b(ab)! the record at byte 10 is cut short"},
        Image{"LengthsDisagree", filemark() + word(2) + "ab" + word(4),
              "f! the record at byte 4 has two lengths that disagree"},
        Image{"LongerThanTheFile", word(0x00FFFFFF) + "ab", "! the record at byte 0 is cut short"},
        Image{"LongerThanABlock", word(0x01000000) + "ab",
              "! the record at byte 0 is longer than a tape block can be"},
        Image{"UnknownMarker", word(0xF0000000), "! the record at byte 0 is an unknown marker"}),
    [](const auto& image) { return image.param.name; });

TEST(TapeImage, CutAnywhereGivesWhatIsWholeAndThenEndsOrSaysWhere) {
    const TemporaryFolder folder;
    const std::string whole = block("abc") + filemark() + block("defg") + filemark() + filemark();
    const std::string all = contents(folder.write("whole.tap", whole));
    ASSERT_EQ(all, "b(abc)fb(defg)ff.");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::string cut = contents(folder.write("cut.tap", whole.substr(0, length)));
        const std::string sound = cut.substr(0, cut.find_first_of(".!"));
        EXPECT_EQ(all.substr(0, sound.size()), sound) << length;
        const bool between =
            length == 0 || length == 12 || length == 16 || length == 28 || length == 32;
        EXPECT_EQ(cut.back() == '.', between) << length << ": " << cut;
    }
}

TEST(TapeImage, WriterMakesTheBytesOfTheFormat) {
    const TemporaryFolder folder;
    const std::string path = folder.file("tape.tap");
    {
        auto writer = TapeImageWriter::open(path, 0);
        ASSERT_TRUE(writer);
        EXPECT_EQ(writer->write_block(bytes_of("abc")), 0);
        EXPECT_EQ(writer->write_filemark(), 0);
        EXPECT_EQ(writer->write_block(bytes_of("de")), 0);
        EXPECT_EQ(writer->write_block({}), -1);
        EXPECT_EQ(writer->position(), 26);
        EXPECT_FALSE(writer->flush());
    }
    EXPECT_EQ(file_bytes(path), block("abc") + filemark() + block("de"));
    {
        auto writer = TapeImageWriter::open(path, 16);
        ASSERT_TRUE(writer);
        EXPECT_EQ(writer->write_block(bytes_of("f")), 0);
    }
    EXPECT_EQ(file_bytes(path), block("abc") + filemark() + block("f"));
}

TEST(TapeImage, PositionsGoBeyondFourGigabytes) {
    const TemporaryFolder folder;
    const std::string path = folder.write("tape.tap", "");
    constexpr std::int64_t kFar = 5LL << 30;
    std::error_code error;
    std::filesystem::resize_file(path, kFar, error);
    if (error) GTEST_SKIP() << "no sparse files here";
    auto writer = TapeImageWriter::open(path, kFar);
    ASSERT_TRUE(writer);
    EXPECT_EQ(writer->write_block(bytes_of("far")), 0);
    EXPECT_FALSE(writer->flush());
    auto reader = TapeImageReader::open(path);
    reader->seek(kFar);
    const TapeImageRecord record = reader->next();
    EXPECT_EQ(record.offset, kFar);
    EXPECT_EQ(text_of(record.data), "far");
}

}  // namespace
}  // namespace halvern
