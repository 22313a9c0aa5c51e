#include "geometry/p1_file.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>

#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// One field a line.
const std::string kSource =
    "S"             // 1      record
    "LINE-0017   "  // 2-13   line name
    "   "           // 14-16
    "1"             // 17     vessel
    "2"             // 18     source
    " "             // 19     other
    "  1001"        // 20-25  point
    "565959.99N"    // 26-35  56 degrees 59 minutes 59.99 seconds
    "0023000.50W"   // 36-46  2 degrees 30 minutes 0.5 seconds west
    " 531234.5"     // 47-55  easting
    "6312345.6"     // 56-64  northing, up against it
    "  87.5"        // 65-70  water depth
    "123134501"     // 71-79  day and time
    " ";            // 80
const std::string kGroups =
    "R"
    "   1"       // 2-5    group
    " 531100.0"  // 6-14   easting
    "6312300.0"  // 15-23  northing
    " 8.0"       // 24-27  depth
    "   2 531087.56312290.2 8.1"
    "    " +
    std::string(22, ' ') +  // a third one is not used
    "1";                    // 80     streamer

Result<P1File> read(const std::string& text, const Reporter& report = SilentReporter()) {
    LineReader lines = LineReader::Over(text, P1File::kColumns);
    return P1File::read(lines, report);
}

std::string record(char letter, const char* point, const char* easting) {
    std::string line = kSource;
    line[0] = letter;
    line.replace(19, 6, point);
    line.replace(46, 9, easting);
    return line + "\n";
}

TEST(P1File, EveryFieldStandsInItsColumns) {
    ASSERT_EQ(kSource.size(), 80u);
    ASSERT_EQ(kGroups.size(), 80u);
    for (const char* end : {"\n", "\r\n", ""}) {  // none, as on tape
        const auto file = read(kSource + end + kGroups + end + kSource + end + "EOF");
        ASSERT_TRUE(file) << file.fault().reason();
        ASSERT_EQ(file->sources().size(), 2u);
        const P1Position& source = file->sources()[0];
        EXPECT_EQ(std::string(source.line_name.begin(), source.line_name.end()),
                  "LINE-0017       ");
        EXPECT_EQ(std::tuple(source.line, source.point), std::tuple(17, 1001));
        EXPECT_NEAR(source.latitude_s, 56 * 3600 + 59 * 60 + 59.99, 1e-9);
        EXPECT_NEAR(source.longitude_s, -(2 * 3600 + 30 * 60 + 0.5), 1e-9);
        EXPECT_EQ(std::tuple(source.easting, source.northing, source.water_depth),
                  std::tuple(531234.5, 6312345.6, 87.5f));
        EXPECT_EQ(std::tuple(source.day, source.second), std::tuple(123, 13 * 3600 + 45 * 60 + 1));
        ASSERT_EQ(file->groups(), 2);
        const P1Group* group = file->find_group(source, {}, 2, P1Count::kNumber, false);
        ASSERT_TRUE(group);
        EXPECT_EQ(std::tuple(group->easting(), group->northing(), group->depth),
                  std::tuple(531087.5, 6312290.2, 8.1f));
        EXPECT_FALSE(file->find_group(source, {}, 3, P1Count::kNumber, false));
        EXPECT_FALSE(file->find_group(file->sources()[1], {}, 1, P1Count::kNumber, false));
        EXPECT_FALSE(file->coordinates_are_multiples(1, false));
        EXPECT_TRUE(file->coordinates_are_multiples(0.1, false));
        EXPECT_TRUE(file->coordinates_are_multiples(0.01, true));
    }
}

TEST(P1File, BlankFieldsAreNoValuesAndPointsAreImplied) {
    CollectedReports report;
    std::string blank = kSource.substr(0, 25) + "\n";  // the rest is cut off
    std::string pointless = kSource + "\n";
    pointless.replace(29, 5, " 5999");      // seconds: two decimals
    pointless.replace(46, 9, "  5312345");  // one decimal
    pointless.replace(64, 6, "   875");
    const auto file = read(blank + pointless, report);
    ASSERT_TRUE(file) << file.fault().reason();
    const P1Position& none = file->sources()[0];
    for (const double value : {none.latitude_s, none.longitude_s, none.easting, none.northing,
                               static_cast<double>(none.water_depth)}) {
        EXPECT_TRUE(std::isnan(value));
    }
    EXPECT_EQ(none.day, 0);
    const P1Position& implied = file->sources()[1];
    EXPECT_EQ(std::tuple(implied.easting, implied.water_depth), std::tuple(531234.5, 87.5f));
    EXPECT_NEAR(implied.latitude_s, 56 * 3600 + 59 * 60 + 59.99, 1e-9);
    EXPECT_THAT(report.of(Weight::kWarning),
                ElementsAre(HasSubstr("Line 2: a coordinate without")));
}

TEST(P1File, HeadersChooseVersionAndAngles) {
    struct Case {
        std::string header;
        bool is_1984;
        const char* latitude;  // columns 26-35
        double seconds;
    };
    const std::string gap(28, ' ');
    const Case cases[] = {
        {"H0202TAPE VERSION               UKOOA-P1/90\n", false, "100000.00S", -36000},
        {"H020 Tape version               UKOOA-P1/84\n", true, "100000.00N", 36000},
        {"H010Survey area\n", true, "100000.00N", 36000},
        {"H2002" + std::string(27, ' ') + "2, GRADS\n", false, "010000000N", 32400},
        {"H2002" + std::string(27, ' ') + "3\n", false, " 10.5    S", -37800},
        {"H2002" + std::string(27, ' ') + "3\n", false, "-10.5     ", -37800},
        {"", false, "106060.00N", 39660},  // minutes and seconds of 60 come from rounding
    };
    for (const auto& [header, is_1984, latitude, seconds] : cases) {
        SCOPED_TRACE(header + latitude);
        std::string line = kSource + "\n";
        line.replace(25, 10, latitude);
        if (header.starts_with("H2002")) line.replace(35, 11, "  2.500000W");
        if (is_1984) line.replace(1, 24, "LINE 5/12          1001 ");
        const auto file = read(header + line);
        ASSERT_TRUE(file) << file.fault().reason();
        EXPECT_EQ(file->is_1984(), is_1984);
        EXPECT_EQ(file->sources()[0].point, 1001);
        EXPECT_EQ(file->sources()[0].line, is_1984 ? 5 : 17);
        EXPECT_NEAR(file->sources()[0].latitude_s, seconds, 1e-6);
    }
    EXPECT_EQ(read("H1800PROJECTION                 001 UTM NORTH   \n" + kSource)->header("H1800"),
              "001 UTM NORTH");
}

TEST(P1File, OtherRecordsStandBesideTheSources) {
    std::string echo = record('E', "  1001", "         ");
    echo.replace(64, 6, "  91.0");
    std::string dry = record('S', "  1002", "      2.0");
    dry.replace(64, 6, "      ");
    const auto file =
        read(record('C', "    51", "     51.0") + dry + record('V', "  1002", "      9.0") + echo +
             kGroups + "\n" + record('Q', "    61", "     61.0") + kGroups);
    ASSERT_TRUE(file) << file.fault().reason();
    ASSERT_EQ(file->sources().size(), 1u);
    EXPECT_EQ(file->sources()[0].water_depth, 91.0f);
    EXPECT_EQ(std::tuple(file->midpoints()[0].point, file->midpoints()[0].easting),
              std::tuple(51, 51.0));
    EXPECT_EQ(std::tuple(file->bins()[0].point, file->bins()[0].easting), std::tuple(61, 61.0));
    EXPECT_EQ(file->groups(), 4) << "they belong to the source before them";
}

// A receiver record of up to three groups with easting 1000 x streamer + group.
std::string groups(int streamer, std::vector<int> numbers) {
    std::string line = "R";
    for (const int number : numbers) {
        char text[40];
        std::snprintf(text, sizeof text, "%4d%9.1f%9.1f 8.0", number, streamer * 1000.0 + number,
                      7.0);
        line += text;
    }
    line.resize(79, ' ');
    return line + static_cast<char>(streamer < 10 ? '0' + streamer : 'A' + streamer - 10) + "\n";
}

TEST(P1File, FindsGroupsByNumberAndCountedThrough) {
    const auto apart = read(kSource + "\n" + groups(1, {1, 2, 3}) + groups(2, {4, 5, 6}));
    const auto again = read(kSource + "\n" + groups(11, {3, 2, 1}) + groups(1, {1, 2, 3}) +
                            groups(11, {5, 4}) + groups(1, {7, 5}));
    ASSERT_TRUE(apart && again);
    EXPECT_FALSE(apart->groups_restart());
    EXPECT_TRUE(again->groups_restart());
    struct Case {
        const P1File& file;
        std::optional<int> streamer;
        int number;
        P1Count count;
        bool backwards;
        int easting;  // 0: no group
    };
    const Case cases[] = {
        {*apart, {}, 5, P1Count::kNumber, false, 2005},
        {*apart, {}, 5, P1Count::kThrough, false, 2005},
        {*apart, {}, 4, P1Count::kNumber, true, 2006},
        {*apart, 2, 5, P1Count::kNumber, false, 2005},
        {*apart, 2, 2, P1Count::kThrough, false, 2005},
        {*apart, 1, 5, P1Count::kNumber, false, 0},
        {*apart, {}, 0, P1Count::kThrough, false, 0},
        {*again, 11, 2, P1Count::kNumber, false, 11002},
        // Streamer 1 has places for groups 1 to 7, of which 4 and 6 are missing; then comes 11.
        {*again, {}, 7, P1Count::kThrough, false, 1007},
        {*again, {}, 4, P1Count::kThrough, false, 0},
        {*again, {}, 8, P1Count::kThrough, false, 11001},
        {*again, {}, 12, P1Count::kThrough, false, 11005},
        {*again, {}, 8, P1Count::kThrough, true, 11005},
        {*again, {}, 13, P1Count::kThrough, false, 0},
    };
    for (const auto& [file, streamer, number, count, backwards, easting] : cases) {
        SCOPED_TRACE(testing::Message() << number << " of " << streamer.value_or(-1));
        const P1Group* group =
            file.find_group(file.sources()[0], streamer, number, count, backwards);
        EXPECT_EQ(group ? group->easting() : 0, easting);
    }
}

TEST(P1File, LeavesOutRecordsThatAreNoNumbersAndRefusesAFileOfThem) {
    const std::string bad = record('S', " 10A1 ", "   x1.0  ");
    std::string southless = kSource + "\n";
    southless[34] = 'X';
    CollectedReports report;
    // The groups of a source that is left out go with it.
    const auto file = read(kGroups + "\n" + bad + kGroups + "\n" + southless + kSource, report);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->sources().size(), 1u);
    EXPECT_EQ(file->groups(), 0);
    EXPECT_THAT(
        report.of(Weight::kWarning),
        ElementsAre("3 of 4 records are left out: line 1: a receiver group before any source"));
    const std::pair<std::string, const char*> refused[] = {
        {bad, "line 1, columns 47-55: the easting cannot be read"},
        {southless, "line 1, columns 26-35: the latitude"},
        {record('S', "      ", "      1.0"), "columns 20-25: the point number"},
        {"H0100\n\n", "it holds no position record"},
        {"x" + kSource, "it holds no position record: line 1 begins with 'x'"},
    };
    for (const auto& [text, reason] : refused) {
        const auto none = read(text);
        ASSERT_FALSE(none) << text;
        EXPECT_THAT(none.fault().reason(), HasSubstr(reason));
    }
    const testing_support::TemporaryFolder folder;
    EXPECT_FALSE(P1File::read(folder.file("none"), report));
    EXPECT_FALSE(P1File::read(folder.path().string(), report));
}

TEST(P1File, AFileThatBreaksOffWithinAFieldGivesNoPartOfIt) {
    const std::string whole = kSource + "\n" + kGroups + "\n" + kSource;
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto file = read(whole.substr(0, length));
        constexpr std::size_t kFieldEnds[] = {25, 35, 46, 55, 64};
        EXPECT_EQ(static_cast<bool>(file), length >= 70 || std::ranges::count(kFieldEnds, length))
            << length;
        if (!file) continue;
        for (const P1Position& source : file->sources()) {
            EXPECT_TRUE(std::isnan(source.easting) || source.easting == 531234.5) << length;
            EXPECT_TRUE(std::isnan(source.water_depth) || source.water_depth == 87.5f) << length;
        }
        if (file->groups() < 2) continue;
        const P1Group* group = file->find_group(file->sources()[0], {}, 2, P1Count::kNumber, false);
        EXPECT_EQ(group->northing(), 6312290.2) << length;
    }
}

}  // namespace
}  // namespace halvern
