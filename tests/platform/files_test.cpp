#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

#include <filesystem>
#include <fstream>
#include <span>

#include "platform/block_writer.h"
#include "platform/detached_process.h"
#include "platform/disk_space.h"
#include "platform/file_lock.h"
#include "platform/replace_file.h"
#include "support/file_size_limit.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing_support::file_bytes;
using testing_support::FileSizeLimit;
using testing_support::TemporaryFolder;

std::ptrdiff_t entries(const fs::path& folder) {
    return std::distance(fs::directory_iterator(folder), fs::directory_iterator{});
}

TEST(ReplaceFile, CreatesAndReplacesWhole) {
    TemporaryFolder folder;
    const std::string path = folder.file("halvern.cfg");
    EXPECT_FALSE(replace_file(path, "a longer first text"));
    fs::permissions(path, fs::perms{0640});
    EXPECT_FALSE(replace_file(path, "short"));
    EXPECT_EQ(file_bytes(path), "short");
    EXPECT_EQ(fs::status(path).permissions(), fs::perms{0640});
    EXPECT_EQ(entries(folder.path()), 1);
}

TEST(ReplaceFile, ReplacesWhatALinkLeadsTo) {
    TemporaryFolder folder;
    const std::string target = folder.write("elsewhere/real.cfg", "old");
    fs::create_symlink("elsewhere/real.cfg", folder.file("halvern.cfg"));
    EXPECT_FALSE(replace_file(folder.file("halvern.cfg"), "new"));
    EXPECT_TRUE(fs::is_symlink(folder.file("halvern.cfg")));
    EXPECT_EQ(file_bytes(target), "new");
}

TEST(ReplaceFile, AFailureLeavesTheOldFileAndNothingElse) {
    TemporaryFolder folder;
    const std::string path = folder.write("halvern.cfg", "old");
    {
        const FileSizeLimit limit(1000);
        EXPECT_EQ(replace_file(path, std::string(5000, 'x')).code(), std::errc::file_too_large);
    }
    EXPECT_EQ(file_bytes(path), "old");
    EXPECT_TRUE(replace_file(folder.path().string(), "x"));
    EXPECT_TRUE(replace_file(folder.file("missing/halvern.cfg"), "x"));
    EXPECT_EQ(entries(folder.path()), 1);
}

TEST(ReplacedFile, TakesThePlaceOnlyWhenItIsWhole) {
    TemporaryFolder folder;
    const std::string path = folder.write("image", "old");
    {
        const auto given_up = ReplacedFile::begin(path);
        ASSERT_TRUE(given_up);
        std::ofstream(given_up->beside()) << "half";
        EXPECT_EQ(unfinished_file_owner(given_up->beside()), current_process_id());
    }
    EXPECT_EQ(file_bytes(path), "old");
    EXPECT_EQ(entries(folder.path()), 1);
    auto file = ReplacedFile::begin(path);
    std::ofstream(file->beside()) << "whole";
    EXPECT_FALSE(file->commit());
    EXPECT_EQ(file_bytes(path), "whole");
    EXPECT_EQ(entries(folder.path()), 1);
    for (const char* name : {"m1", "m1.new", "m1.new12x", ".new12", "m1.new-3", "m1.new0"}) {
        EXPECT_FALSE(unfinished_file_owner(name)) << name;
    }
}

TEST(FileLock, HoldsOffASecondUntilItEndsAndMovesWithAReplacedFile) {
    using enum FileLock::Missing;
    TemporaryFolder folder;
    const std::string path = folder.file("out");
    EXPECT_TRUE(FileLock::take(path, kFault).fault().is_missing());
    EXPECT_FALSE(fs::exists(path));
    auto lock = FileLock::take(path, kCreate);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(lock->created());
    const auto taken = [&] {
        return FileLock::take(path, kCreate).fault().code() == std::errc::device_or_resource_busy;
    };
    EXPECT_TRUE(taken());
    EXPECT_FALSE(replace_file(path, "new", Reach::kSystem, &*lock));
    EXPECT_TRUE(taken()) << "the file of that name is another by now";
    lock->release();
    EXPECT_FALSE(taken());
    EXPECT_TRUE(FileLock::take(folder.path().string(), kCreate).fault());
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(FileLock::take(folder.file("pipe"), kCreate).fault());
}

std::span<const std::byte> bytes_of(const std::string& text) {
    return std::as_bytes(std::span(text));
}

TEST(BlockWriterTest, ModesKeepWhatTheyShould) {
    TemporaryFolder folder;
    const std::string path = folder.file("a");
    const auto write = [&](BlockWriter::Mode mode, std::int64_t offset, const std::string& piece) {
        BlockWriter writer;
        EXPECT_FALSE(writer.open(path, mode, offset));
        EXPECT_EQ(writer.write(bytes_of(piece)), piece.size());
        EXPECT_FALSE(writer.finish());
        return file_bytes(path);
    };
    EXPECT_EQ(write(BlockWriter::Mode::kCreate, 0, "first"), "first");
    EXPECT_EQ(write(BlockWriter::Mode::kUpdate, 5, "second"), "firstsecond");
    EXPECT_EQ(write(BlockWriter::Mode::kUpdate, 5, "SEC"), "firstSECond");
    EXPECT_EQ(write(BlockWriter::Mode::kCreate, 0, "new"), "new");

    BlockWriter writer;
    EXPECT_TRUE(writer.open(folder.file("missing"), BlockWriter::Mode::kUpdate).is_missing());
    EXPECT_TRUE(writer.open(folder.path().string(), BlockWriter::Mode::kCreate));
    EXPECT_TRUE(writer.open(folder.file("no/such/folder"), BlockWriter::Mode::kCreate));
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_TRUE(writer.open(folder.file("pipe"), BlockWriter::Mode::kCreate));
    EXPECT_EQ(writer.write(bytes_of("x")), 0u) << "nothing is open";
}

// What a process that is killed leaves is what the system has: the file, read while it is written.
TEST(BlockWriterTest, HandsTheSystemWholePieces) {
    TemporaryFolder folder;
    constexpr std::size_t kStart = 3600;
    for (const std::size_t size : {std::size_t{400'000}, std::size_t{1'500'000}}) {
        const std::string path = folder.write("a", std::string(kStart + 5 * size, '.'));
        BlockWriter writer;
        EXPECT_FALSE(writer.open(path, BlockWriter::Mode::kUpdate, kStart));
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(writer.write(bytes_of(std::string(size, 'x'))), size);
            const std::string bytes = file_bytes(path);
            for (std::size_t first = kStart; first < bytes.size(); first += size) {
                EXPECT_EQ(bytes[first], bytes[first + size - 1]) << size << " after " << i + 1;
            }
        }
    }
}

TEST(DiskSpace, OfAPathThatIsNotThereYetIsThatOfItsDirectory) {
    TemporaryFolder folder;
    struct statvfs system {};
    ASSERT_EQ(statvfs(folder.path().c_str(), &system), 0);
    const auto bytes = free_disk_bytes(folder.file("missing/far/down"));
    ASSERT_TRUE(bytes);
    // Others write to the same disk meanwhile.
    EXPECT_NEAR(static_cast<double>(*bytes), static_cast<double>(system.f_bavail * system.f_frsize),
                2e9);
}

}  // namespace
}  // namespace halvern
