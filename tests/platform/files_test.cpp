#include <gtest/gtest.h>
#include <sys/statvfs.h>

#include <filesystem>

#include "platform/disk_space.h"
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
        EXPECT_EQ(replace_file(path, std::string(5000, 'x')), std::errc::file_too_large);
    }
    EXPECT_EQ(file_bytes(path), "old");
    EXPECT_TRUE(replace_file(folder.path().string(), "x"));
    EXPECT_TRUE(replace_file(folder.file("missing/halvern.cfg"), "x"));
    EXPECT_EQ(entries(folder.path()), 1);
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
