#include "platform/block_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <random>

#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::TemporaryFolder;

// A byte that tells its place: no two places less than 251 * 256 apart hold the same pair.
std::byte byte_at(std::int64_t place) {
    return static_cast<std::byte>((place % 251) ^ (place / 251));
}

std::string pattern(std::int64_t size) {
    std::string bytes(static_cast<std::size_t>(size), '\0');
    for (std::int64_t i = 0; i < size; ++i) {
        bytes[static_cast<std::size_t>(i)] = static_cast<char>(byte_at(i));
    }
    return bytes;
}

void expect_bytes(std::span<const std::byte> bytes, std::int64_t from, std::size_t count) {
    ASSERT_EQ(bytes.size(), count) << "at " << from;
    for (std::size_t i = 0; i < count; ++i) {
        const std::int64_t place = from + static_cast<std::int64_t>(i);
        ASSERT_EQ(bytes[i], byte_at(place)) << "byte " << place;
    }
}

class BlockReaderOnPattern : public testing::Test {
protected:
    static constexpr std::int64_t kSize = 5'000'003;  // prime: no record size divides it
    TemporaryFolder folder_;
    std::string path_ = folder_.write("pattern", pattern(kSize));
    BlockReader reader_ = std::move(*BlockReader::open(path_));
};

TEST_F(BlockReaderOnPattern, HandsOutTheWholeFileInRecordsOfAnySize) {
    EXPECT_EQ(reader_.size(), kSize);
    for (const std::size_t record : {240u, 6240u, 65536u, 700'000u, 2'100'000u, 9'000'000u}) {
        SCOPED_TRACE(record);
        reader_.seek(0);
        std::int64_t place = 0;
        while (place + static_cast<std::int64_t>(record) <= kSize) {
            expect_bytes(reader_.next(record), place, record);
            place += static_cast<std::int64_t>(record);
            ASSERT_EQ(reader_.position(), place);
        }
        // The short rest, twice: the position waits where it begins.
        for (int attempt = 0; attempt < 2; ++attempt) {
            expect_bytes(reader_.next(record), place, static_cast<std::size_t>(kSize - place));
            EXPECT_EQ(reader_.position(), place);
        }
    }
}

TEST_F(BlockReaderOnPattern, GoesAnywhere) {
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        // Near steps and far jumps in turn, so that blocks are kept, passed over and left.
        const std::int64_t place = i % 3 == 0 ? static_cast<std::int64_t>(random() % kSize)
                                              : (reader_.position() + random() % 30000) % kSize;
        const std::int64_t left = kSize - place;
        const std::int64_t wanted = random() % 20000;
        reader_.seek(place);
        expect_bytes(reader_.next(static_cast<std::size_t>(wanted)), place,
                     static_cast<std::size_t>(std::min(wanted, left)));
    }
}

TEST_F(BlockReaderOnPattern, AnAbsurdCountGivesWhatThereIs) {
    reader_.seek(kSize - 10);
    expect_bytes(reader_.next(std::numeric_limits<std::size_t>::max()), kSize - 10, 10);
    for (const std::int64_t beyond : {kSize, kSize + 1, std::numeric_limits<std::int64_t>::max()}) {
        reader_.seek(beyond);
        EXPECT_TRUE(reader_.next(100).empty());
        EXPECT_EQ(reader_.position(), beyond);
    }
}

TEST_F(BlockReaderOnPattern, AFileThatShrinksMeanwhileReadsShort) {
    (void)reader_.next(3600);
    std::filesystem::resize_file(path_, 3'000'000);
    reader_.seek(2'999'000);
    expect_bytes(reader_.next(6240), 2'999'000, 1000);
    EXPECT_EQ(reader_.position(), 2'999'000);
    EXPECT_EQ(reader_.fault().reason(), "the file has become shorter");
}

TEST(BlockReader, OpensRegularFilesOnly) {
    TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);  // must not wait for a writer
    for (const std::string& path : {folder.file("missing"), folder.path().string(),
                                    folder.file("pipe"), std::string("/dev/zero"), std::string()}) {
        EXPECT_FALSE(BlockReader::open(path)) << path;
    }
    BlockReader empty = std::move(*BlockReader::open(folder.write("empty", "")));
    EXPECT_EQ(empty.size(), 0);
    EXPECT_TRUE(empty.next(1).empty());
    EXPECT_FALSE(empty.fault());  // the end of a file is none
}

}  // namespace
}  // namespace halvern
