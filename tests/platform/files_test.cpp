#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/statvfs.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <thread>

#include "platform/create_file.h"
#include "platform/disk_space.h"
#include "platform/file_position.h"
#include "platform/replace_file.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing_support::file_bytes;
using testing_support::TemporaryFolder;

// Lets no file grow beyond `bytes` while it lives: what a full disk or a quota looks like.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{.rlim_cur = bytes, .rlim_max = before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int);
};

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

TEST(CreateExclusively, GivesEachNameOnce) {
    TemporaryFolder folder;
    std::atomic<int> created = 0;
    std::atomic<int> taken = 0;
    const auto race = [&] {
        for (int i = 0; i < 300; ++i) {
            const std::error_code error = create_exclusively(folder.file(std::to_string(i)));
            if (!error) ++created;
            if (error == std::errc::file_exists) ++taken;
        }
    };
    std::thread first(race);
    std::thread second(race);
    first.join();
    second.join();
    EXPECT_EQ(created, 300);
    EXPECT_EQ(taken, 300);
    EXPECT_EQ(create_exclusively(folder.file("missing/x")), std::errc::no_such_file_or_directory);
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

TEST(FilePosition, GoesBeyondFourGibibytes) {
    TemporaryFolder folder;
    const std::int64_t place = std::int64_t{6} << 30;
    std::FILE* const file = std::fopen(folder.file("big").c_str(), "wb");
    EXPECT_EQ(seek_stream(file, place, SEEK_SET), 0);
    EXPECT_EQ(std::fputs("end", file), 1);
    EXPECT_EQ(stream_position(file), place + 3);
    std::fclose(file);
    EXPECT_EQ(fs::file_size(folder.file("big")), static_cast<std::uintmax_t>(place) + 3);
}

}  // namespace
}  // namespace halvern
