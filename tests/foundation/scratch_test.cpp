#include "foundation/scratch.h"

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "foundation/global_config.h"
#include "foundation/system_root.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using namespace testing_support;

class Scratch : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(ReadGlobalConfig(root_.file("halvern.cfg")), 0); }
    void TearDown() override { RemoveScratchFiles(); }

    LogCapture log_;
    SystemRoot root_;
};

TEST_F(Scratch, ProcessesThatDrawTheSameNumbersGetDifferentNames) {
    constexpr int kProcesses = 8, kNames = 25;
    for (int i = 0; i < kProcesses; ++i) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            std::srand(5);
            int made = 0;
            for (int n = 0; n < kNames; ++n) made += !MakeScratchName().empty();
            _exit(made == kNames ? 0 : 1);
        }
    }
    for (int i = 0; i < kProcesses; ++i) {
        int status = -1;
        wait(&status);
        EXPECT_EQ(status, 0);
    }
    const auto files = fs::directory_iterator(root_.file("scratch"));
    EXPECT_EQ(std::distance(begin(files), end(files)), kProcesses * kNames);
}

TEST_F(Scratch, FilesGoWithTheJob) {
    root_.write("scratch/log1", "");
    const std::string first = MakeScratchName();
    const std::string second = MakeScratchName();
    RemoveScratchFile(first);
    EXPECT_FALSE(fs::exists(first));
    EXPECT_TRUE(fs::exists(second));
    RemoveScratchFile(root_.file("scratch/log1"));  // not one of ours
    RemoveScratchFiles();
    EXPECT_THAT(root_.entries(), ElementsAre("data/", "halvern.cfg", "scratch/", "scratch/log1"));
    fs::remove_all(root_.file("scratch"));
    EXPECT_EQ(MakeScratchName(), "");
    EXPECT_THAT(log_.text(), HasSubstr("': No such file or directory.\n"));
}

// A file that is open cannot be removed everywhere; here a directory with an entry plays it.
TEST_F(Scratch, WhatCannotBeRemovedIsTriedAgain) {
    const std::string name = MakeScratchName();
    fs::remove(name);
    fs::create_directories(name + "/entry");
    RemoveScratchFile(name);
    RemoveScratchFiles();
    fs::remove(name + "/entry");
    RemoveScratchFiles();
    EXPECT_FALSE(fs::exists(name));
}

TEST(RemoveDirectoryTree, LeavesDotDirectoriesAndWhatLinksLeadTo) {
    const SystemRoot root;
    root.write("p/.keep/f", "");
    root.write("p/sub/deep/.hidden", "");
    root.write("outside/precious", "");
    fs::create_directory_symlink(root.file("outside"), root.file("p/link"));
    fs::create_directory_symlink(root.file("outside"), root.file("direct"));
    const LogCapture quiet;
    EXPECT_EQ(RemoveDirectoryTree(root.file("p")), -1);
    EXPECT_EQ(RemoveDirectoryTree(root.file("direct")), 0);
    EXPECT_EQ(RemoveDirectoryTree(root.file("direct")), -1);
    EXPECT_THAT(root.entries(),
                ElementsAre("outside/", "outside/precious", "p/", "p/.keep/", "p/.keep/f"));
}

}  // namespace
}  // namespace halvern
