#include "foundation/messages.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string_view>

#include "support/file_size_limit.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::file_bytes;
using testing_support::TemporaryFolder;

class LogToFile : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(LogDestination::UseFile(path_.c_str())); }
    void TearDown() override { LogDestination::Close(); }

    TemporaryFolder folder_;
    std::string path_ = folder_.write("log1", "of an earlier run\n");
};

// System calls that this process made to write, as the kernel counts them; -1 when it does not.
// By C streams: checked builds look into C++ ones with writes of their own, which would count.
long writes_so_far() {
    std::FILE* const file = std::fopen("/proc/self/io", "r");
    if (!file) return -1;
    char name[64];
    long count = -1;
    while (std::fscanf(file, "%63s %ld", name, &count) == 2) {
        if (std::string_view(name) == "syscw:") break;
        count = -1;
    }
    std::fclose(file);
    return count;
}

TEST_F(LogToFile, StartsEmptyAndShowsEachTextAtOnce) {
    EXPECT_EQ(file_bytes(path_), "");
    LogPrint("File = %s, %d\n", "a", 3);
    EXPECT_EQ(file_bytes(path_), "File = a, 3\n");
    LogPrint("%s", "");
    ItemMessage("AGC", "Window Size = %d\n", 500);
    ItemWarning("AGC", "Cut.\n");
    ItemError("SEG-Y Disk Input", "Cannot open '%s'.\n", "100%s%n.sgy");
    EXPECT_EQ(file_bytes(path_),
              "File = a, 3\n"
              "AGC: Window Size = 500\n"
              "*** WARNING in AGC: Cut.\n"
              "*** ERROR in SEG-Y Disk Input: Cannot open '100%s%n.sgy'.\n");
}

TEST_F(LogToFile, WritesOnceATextAndTwiceAnItemMessage) {
    const long start = writes_so_far();
    if (start < 0) GTEST_SKIP() << "the kernel does not count writes";
    LogPrint("%s\n", std::string(9000, 'x').c_str());
    const long after_print = writes_so_far();
    ItemMessage("AGC", "Window Size = %d\n", 500);
    const long after_message = writes_so_far();
    EXPECT_EQ(after_print - start, 1);
    EXPECT_EQ(after_message - after_print, 2);
}

TEST_F(LogToFile, CutsLongTextAndKeepsItsLineEnd) {
    const std::string text(20000, 'x');
    LogPrint("%s\n", text.c_str());
    EXPECT_EQ(file_bytes(path_), std::string(9998, 'x') + "\n");
    LogPrint("%s", std::string(9999, 'y').c_str());
    EXPECT_EQ(file_bytes(path_).size(), 2u * 9999);
    ItemError("AGC", "%s\n", text.c_str());
    EXPECT_EQ(file_bytes(path_).substr(2 * 9999),
              "*** ERROR in AGC: " + std::string(998, 'x') + "\n");
}

TEST_F(LogToFile, GoesOnWhenTheDiskIsFull) {
    {
        const testing_support::FileSizeLimit limit(12);
        LogPrint("ten bytes\n");
        LogPrint("more than fits\n");
        LogPrint("nothing fits\n");
    }
    LogPrint("room again\n");
    EXPECT_EQ(file_bytes(path_), "ten bytes\nmoroom again\n");
}

TEST_F(LogToFile, AnotherThatCannotBeCreatedChangesNothing) {
    EXPECT_FALSE(LogDestination::UseFile(folder_.file("missing/log").c_str()));
    EXPECT_FALSE(LogDestination::UseFile(folder_.path().c_str()));
    LogPrint("still here\n");
    EXPECT_EQ(file_bytes(path_), "still here\n");
}

TEST(Log, StandardOutputIsNowhere) {
    testing::internal::CaptureStdout();
    LogDestination::UseStandardOutput();
    LogPrint("not to be seen\n");
    ItemError("AGC", "nor this\n");
    LogDestination::UseStream(stdout);
    LogPrint("nor this\n");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace halvern
