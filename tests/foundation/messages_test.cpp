#include "foundation/report.h"

#include <gtest/gtest.h>

#include "support/file_size_limit.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;

class LogToFile : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(LogDestination::UseFile(path_)); }
    void TearDown() override { LogDestination::Close(); }

    TemporaryFolder folder_;
    std::string path_ = folder_.write("log1", "of an earlier run\n");
};

TEST_F(LogToFile, StartsEmptyAndShowsEachTextAtOnce) {
    // Another one that cannot be created changes nothing.
    EXPECT_TRUE(LogDestination::UseFile(folder_.file("missing/log")));
    LogPrint("File = %s, %d\n", "a", 3);
    EXPECT_EQ(file_bytes(path_), "File = a, 3\n");
    LogReporter("AGC").Message("Window Size = %d\n", 500);
    LogReporter("AGC").Warning("Cut.\n");
    LogReporter("SEG-Y Disk Input").Error("Cannot open '%s'.\n", "100%s%n.sgy");
    EXPECT_EQ(file_bytes(path_),
              "File = a, 3\n"
              "AGC: Window Size = 500\n"
              "*** WARNING in AGC: Cut.\n"
              "*** ERROR in SEG-Y Disk Input: Cannot open '100%s%n.sgy'.\n");
}

TEST_F(LogToFile, CutsLongTextAndKeepsItsLineEnd) {
    const std::string text(20000, 'x');
    LogPrint("%s\n", text.c_str());
    EXPECT_EQ(file_bytes(path_), std::string(9998, 'x') + "\n");
    LogPrint("%s", std::string(9999, 'y').c_str());
    EXPECT_EQ(file_bytes(path_).size(), 2u * 9999);
    LogReporter("AGC").Error("%s\n", text.c_str());
    EXPECT_EQ(file_bytes(path_).substr(2 * 9999),
              "*** ERROR in AGC: " + std::string(998, 'x') + "\n");
}

TEST_F(LogToFile, GoesOnWhenTheDiskIsFull) {
    {
        const FileSizeLimit limit(12);
        LogPrint("ten bytes\n");
        LogPrint("more than fits\n");
        LogPrint("nothing fits\n");
    }
    LogPrint("room again\n");
    EXPECT_EQ(file_bytes(path_), "ten bytes\nmoroom again\n");
}

}  // namespace
}  // namespace halvern
