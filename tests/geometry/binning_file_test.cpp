#include "geometry/binning_file.h"

#include <gtest/gtest.h>

#include "support/log_capture.h"
#include "support/progress_watcher.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;

/// Two rows of two columns, one bin filled, one point in the second list.
constexpr char kSmallFile[] =
    "KELDARBIN0031"
    // Rows 10 to 14, columns 1 to 2; origin 1.5, -2.
    "\x0A\0\0\0\x0E\0\0\0\1\0\0\0\2\0\0\0\xFE\xFF\xFF\xFF\7\0\0\0"
    "\0\0\0\0\0\0\xF8\x3F\0\0\0\0\0\0\0\xC0"
    "\0\0\0\0\0\0\x39\x40\0\0\0\0\0\0\x39\x40\1\2\3\4\5\6\7\x40"
    "\0\0\0\0\4\0\0\0\0\0\0\0\0\0\0\0\1\0\0\0\x09\0\0\0"
    // The second row: two members in its first bin, none in the other filled one.
    "\0\0\1\2\0\x11\0\0\0\x12\0\0\0\x21\0\0\0\x22\0\0\x80\1\0\0"
    // No first points, one second point at 0.5, -1.
    "\0\0\0\0\1\0\0\0\3\0\0\0\xFF\xFF\xFF\xFF\5\0\0\0"
    "\0\0\0\0\0\0\xE0\x3F\0\0\0\0\0\0\xF0\xBF\1\0\x31\0\0\0";
const std::string kSmall(kSmallFile, sizeof kSmallFile - 1);

TEST(BinningFile, IsReadAndWrittenByteForByte) {
    const TemporaryFolder folder;
    for (const char version : {'3', '2', '1'}) {
        std::string bytes = kSmall;
        bytes[11] = version;
        BinningFile file;
        ASSERT_EQ(read_binning_file(folder.write("in", bytes), file, kTestReport), 0);
        EXPECT_EQ(file.version, version - '0');
        EXPECT_EQ(file.rows(), 2);
        EXPECT_EQ(file.columns(), 2);
        EXPECT_EQ(file.y_origin, -2);
        EXPECT_EQ(file.more_ranges[0], -2);
        ASSERT_EQ(file.bins.size(), 2u);
        EXPECT_EQ(file.bins[0].row, 1);
        ASSERT_EQ(file.bins[0].members.size(), 2u);
        EXPECT_EQ(file.bins[0].members[0].second, 0x21u);
        EXPECT_EQ(file.bins[0].members[1].first, 0x12u);
        ASSERT_EQ(file.second_points.size(), 1u);
        EXPECT_EQ(file.second_points[0].coordinates[0], 0.5);
        EXPECT_EQ(file.second_points[0].members[0], 0x31u);
        ASSERT_EQ(write_binning_file(folder.file("out"), file, kTestReport), 0);
        EXPECT_EQ(file_bytes(folder.file("out")), kSmall) << "always the newest version";
    }
}

TEST(BinningFile, RefusesWhatIsNotWhole) {
    const TemporaryFolder folder;
    BinningFile file;
    LogCapture log;
    for (std::size_t length = 0; length < kSmall.size(); ++length) {
        ASSERT_EQ(
            read_binning_file(folder.write("cut", kSmall.substr(0, length)), file, kTestReport), -1)
            << length;
    }
    const std::size_t bins = 13 + 24 + 40 + 24;
    const std::pair<std::size_t, std::string> kDamages[] = {
        {0, "k"},                                        // magic
        {11, "4"},                                       // version
        {17, "\xFF\xFF\xFF\x7F"},                        // 500 million rows
        {17, std::string("\0\0\0\0", 4)},                // rows that run backwards
        {13 + 24 + 40 + 4, std::string("\0\0\0\0", 4)},  // row increment
        {bins, "\2"},                                    // neither empty nor filled
        {bins + 3, "\xFF\xFF"},                          // members of a bin
        {bins + 24, "\xFF\xFF\xFF\x7F"},                 // points
        {bins + 24, "\xFF\xFF\xFF\xFF"},                 // fewer than none
        {kSmall.size(), "x"},                            // bytes after the end
    };
    for (const auto& [at, bytes] : kDamages) {
        std::string damaged = kSmall;
        damaged.replace(std::min(at, kSmall.size()), bytes.size(), bytes);
        EXPECT_EQ(read_binning_file(folder.write("damaged", damaged), file, kTestReport), -1) << at;
    }
    EXPECT_EQ(read_binning_file(folder.file("absent"), file, kTestReport), -1);
    EXPECT_NE(log.text().find("Invalid Binning File.  Delete this one"), std::string::npos);
}

TEST(BinningFile, RefusesWhatItCannotHoldAndStopsWhenAsked) {
    const TemporaryFolder folder;
    BinningFile file;
    file.row_end = 1;
    file.first_points.resize(2);
    file.second_points.resize(2);
    ProgressWatcher watcher;
    const std::string path = folder.write("out", "before");
    watcher.stop_at = 60;
    LogCapture log;
    EXPECT_EQ(write_binning_file(path, file, kTestReport, &watcher), -1);
    EXPECT_EQ(file_bytes(path), "before");
    EXPECT_FALSE(std::filesystem::exists(path + ".new"));
    watcher = {};
    EXPECT_EQ(write_binning_file(path, file, kTestReport, &watcher), 0);
    EXPECT_EQ(watcher.percents, (std::vector{25, 50, 62, 75, 87}));  // two rows, two and two points

    file.bins.push_back({.row = 0, .column = 1, .members = {}});
    EXPECT_EQ(write_binning_file(path, file, kTestReport), -1) << "outside the grid";
    file.bins.back() = {.row = 0, .column = 0, .members = std::vector<BinMember>(65536)};
    EXPECT_EQ(write_binning_file(path, file, kTestReport), -1);
    file.bins = {{.row = 1, .column = 0, .members = {}}, {.row = 0, .column = 0, .members = {}}};
    EXPECT_EQ(write_binning_file(path, file, kTestReport), -1) << "out of order";
    file.numbering[1] = 0;
    file.bins.clear();
    EXPECT_EQ(write_binning_file(path, file, kTestReport), -1) << "no grid";
}

}  // namespace
}  // namespace halvern
