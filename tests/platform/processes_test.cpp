#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/detached_process.h"
#include "platform/program_path.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing_support::file_bytes;
using testing_support::TemporaryFolder;

std::optional<DetachedProcess> start(const std::vector<std::string>& arguments) {
    std::error_code error;
    auto process = DetachedProcess::start(arguments, error);
    EXPECT_FALSE(error) << error.message();
    return process;
}

TEST(DetachedProcess, PassesArgumentsUnchangedAndTellsTheStatus) {
    TemporaryFolder folder;
    auto process = start({"/bin/sh", "-c", R"(printf '%s|' "$@" > "$0"; exit 7)",
                          folder.file("out"), "two words", "", R"(a"b\)", "$HOME", "*"});
    ASSERT_TRUE(process);
    EXPECT_EQ(process->wait(), 7);
    EXPECT_EQ(process->exit_status(), 7);
    EXPECT_EQ(file_bytes(folder.file("out")), R"(two words||a"b\|$HOME|*|)");
}

TEST(DetachedProcess, HasASessionOfItsOwnAndNoFilesOfOurs) {
    TemporaryFolder folder;
    const std::ofstream ours(folder.file("ours"));
    // Sixth field of stat is the session: the process leads it. The listing shows open files.
    auto process = start({"/bin/sh", "-c",
                          R"(set -- $(cat /proc/$$/stat); test "$6" = $$ || exit 1
                             readlink /proc/$$/fd/* > "$0"; exit 0)",
                          folder.file("out")});
    ASSERT_TRUE(process);
    EXPECT_EQ(process->wait(), 0);
    const std::string files = file_bytes(folder.file("out"));
    EXPECT_EQ(files.find("/dev/null\n"), 0u) << files;
    EXPECT_EQ(files.find("ours"), std::string::npos) << files;
}

TEST(DetachedProcess, SaysWhyAProgramDoesNotStart) {
    std::error_code error;
    EXPECT_FALSE(DetachedProcess::start({"/no/such/program"}, error));
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    EXPECT_FALSE(DetachedProcess::start({fs::temp_directory_path().string()}, error));
    EXPECT_EQ(error, std::errc::permission_denied);
    EXPECT_FALSE(DetachedProcess::start({}, error));
    EXPECT_TRUE(error);
}

TEST(DetachedProcess, CanBeSeenAndStoppedByItsNumber) {
    auto process = start({"/bin/sleep", "60"});
    ASSERT_TRUE(process);
    EXPECT_TRUE(process_is_running(process->id()));
    EXPECT_FALSE(process->exit_status());
    EXPECT_TRUE(stop_process(process->id()));
    EXPECT_EQ(process->wait(), 128 + SIGTERM);
    EXPECT_FALSE(process_is_running(process->id()));
    EXPECT_FALSE(stop_process(process->id()));
}

TEST(DetachedProcess, OneThatEndedIsNotRunningEvenUnasked) {
    auto process = start({"/bin/true"});
    ASSERT_TRUE(process);
    for (int i = 0; i < 2000 && process_is_running(process->id()); ++i) usleep(1000);
    EXPECT_FALSE(process_is_running(process->id()));
    EXPECT_EQ(process->exit_status(), 0);
}

// As after "env --ignore-signal=CHLD": the system would throw the status of a child away.
TEST(DetachedProcess, ItsEndIsSeenWhereSignalsOfChildrenAreIgnored) {
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    EXPECT_EQ(start({"/bin/sh", "-c", "exit 7"})->wait(), 7);
    auto asked = start({"/bin/sleep", "0.2"});
    std::signal(SIGCHLD, SIG_IGN);
    for (int i = 0; i < 5000 && !asked->exit_status(); ++i) usleep(1000);
    EXPECT_EQ(asked->exit_status(), -1);
    EXPECT_EQ(asked->wait(), -1);
    std::signal(SIGCHLD, before);
}

TEST(DetachedProcess, NumbersThatNameGroupsNameNoProcess) {
    for (const std::int64_t id : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{1} << 40}) {
        EXPECT_FALSE(process_is_running(id)) << id;
        EXPECT_FALSE(stop_process(id)) << id;
    }
}

class ProgramPath : public testing::Test {
protected:
    void SetUp() override {
        folder_.write("installed/bin/halvern2", "");
        fs::create_directories(root_ / "bin/sub");
        fs::create_symlink(root_ / "installed/bin/halvern2", root_ / "bin/halvern2");
        fs::create_directories(root_ / "a/b");
        fs::create_symlink(root_ / "a/b", root_ / "jump");
        folder_.write("a/tool", "");
        fs::current_path(root_ / "bin");
    }
    void TearDown() override { fs::current_path(before_); }

    TemporaryFolder folder_;
    fs::path root_ = fs::canonical(folder_.path());
    fs::path before_ = fs::current_path();
};

TEST_F(ProgramPath, IsTheOneTheProgramWasStartedBy) {
    const std::string link = (root_ / "bin/halvern2").string();
    EXPECT_EQ(program_path(link), link);
    EXPECT_EQ(program_path("./halvern2"), link);
    EXPECT_EQ(program_path("../bin/halvern2"), link);
    EXPECT_EQ(program_path("sub/../halvern2"), link);
    // Here ".." leads to the parent of the link's target.
    EXPECT_EQ(program_path("../jump/../tool"), (root_ / "a/tool").string());
}

TEST_F(ProgramPath, IsElseWhatTheSystemReports) {
    const std::string own = fs::canonical("/proc/self/exe").string();
    // The third is a file here, but was looked for along PATH.
    for (const char* argument : {"", "./no-such-program", "halvern2", "./sub"}) {
        EXPECT_EQ(program_path(argument), own) << argument;
    }
}

}  // namespace
}  // namespace halvern
