#include "geometry/sps_data_set.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/log_capture.h"
#include "support/progress_watcher.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::kTestReport;
using testing_support::LogCapture;
using testing_support::ProgressWatcher;
using testing_support::TemporaryFolder;

std::string point_line(char letter, int line, int point, std::uint8_t index, double easting) {
    std::string text;
    append_sps_point(text, letter,
                     {.line = line, .point = point, .index = index, .easting = easting});
    return text;
}

struct Spread {
    int ffid, source_line, source_point, first_channel, last_channel;
    int receiver_line, first_receiver, last_receiver;
};

std::string relation_line(const Spread& s) {
    std::string text;
    append_sps_relation(text, "1",
                        {.ffid = s.ffid,
                         .source_line = s.source_line,
                         .source_point = s.source_point,
                         .source_index = 1,
                         .first_channel = s.first_channel,
                         .last_channel = s.last_channel,
                         .receiver_line = s.receiver_line,
                         .first_receiver = s.first_receiver,
                         .last_receiver = s.last_receiver,
                         .receiver_index = 1});
    return text;
}

/// Reads a text as the file of sources (S), receivers (R) or relations (X).
int read(SpsDataSet& set, char letter, const std::string& text, Progress* progress = nullptr) {
    LineReader lines = LineReader::Over(text, 198);
    if (letter == 'S') return set.read_sources(lines, "s", progress);
    if (letter == 'R') return set.read_receivers(lines, "r", progress);
    return set.read_relations(lines, "x", progress);
}

/// A data set of these three texts; fails the test when one of them cannot be read.
SpsDataSet data_set(const std::string& sources, const std::string& receivers,
                    const std::string& relations) {
    SpsDataSet set(kTestReport);
    EXPECT_EQ(read(set, 'S', sources), 0);
    EXPECT_EQ(read(set, 'R', receivers), 0);
    EXPECT_EQ(read(set, 'X', relations), 0);
    EXPECT_EQ(set.prepare(), 0);
    return set;
}

TEST(SpsFind, LineNamesAreComparedAsText) {
    std::string right_adjusted = point_line('R', 5, 101, 1, 0);
    std::swap(right_adjusted[1], right_adjusted[16]);
    SpsDataSet set = data_set(point_line('S', 1, 11, 1, 0), right_adjusted,
                              relation_line({7, 1, 11, 1, 3, 5, 101, 103}));
    EXPECT_EQ(set.find(7, 1).status, SpsStatus::kNoReceiver);
}

// Two records hold the same trace: the one under the cursor wins, then the one after it, and the
// first of the file after a jump.
TEST(SpsFind, TheCursorDecidesAmongDuplicates) {
    SpsDataSet set = data_set(point_line('S', 1, 11, 1, 110) + point_line('S', 1, 12, 1, 120) +
                                  point_line('S', 1, 13, 1, 130),
                              point_line('R', 5, 101, 1, 0),
                              relation_line({7, 1, 11, 1, 2, 5, 101, 101}) +
                                  relation_line({8, 1, 12, 1, 2, 5, 101, 101}) +
                                  relation_line({7, 1, 13, 1, 4, 5, 101, 101}));
    EXPECT_EQ(set.find(7, 2).source->point, 11);
    EXPECT_EQ(set.find(7, 4).source->point, 13);
    EXPECT_EQ(set.find(7, 2).source->point, 13) << "still under the cursor";
    EXPECT_EQ(set.find(8, 2).source->point, 12);
    EXPECT_EQ(set.find(7, 2).source->point, 13) << "the next one";
}

/// Another formulation of the search: nothing but the lists, read from the front.
struct PlainSearch {
    const SpsDataSet& set;
    std::vector<int> source_of;  // [relations]
    std::size_t cursor = 0;

    explicit PlainSearch(const SpsDataSet& s) : set(s) {
        int last = -1;
        for (const SpsRelation& relation : set.relations()) {
            const int count = static_cast<int>(set.sources().size());
            std::vector<int> order = {last, last + 1};
            for (int i = 0; i < count; ++i) order.push_back(i);
            int found = -1;
            for (const int i : order) {
                if (i < 0 || i >= count || found >= 0) continue;
                const SpsPoint& source = set.sources()[static_cast<std::size_t>(i)];
                if (source.point == relation.source_point &&
                    source.index == relation.source_index &&
                    source.line_name == relation.source_line_name) {
                    found = i;
                }
            }
            source_of.push_back(found);
            if (found >= 0) last = found;
        }
    }

    SpsMatch find(int ffid, int channel) {
        const auto relations = set.relations();
        std::vector<std::size_t> order = {cursor, cursor + 1};
        for (std::size_t i = 0; i < relations.size(); ++i) order.push_back(i);
        bool ffid_seen = false;
        for (const std::size_t i : order) {
            if (i >= relations.size() || relations[i].ffid != ffid) continue;
            ffid_seen = true;
            const SpsRelation& r = relations[i];
            if (channel < r.first_channel || channel > r.last_channel) continue;
            cursor = i;
            if (source_of[i] < 0) return {.status = SpsStatus::kNoSource, .relation = &r};
            const int steps = channel - r.first_channel;
            SpsMatch match{.status = SpsStatus::kNoReceiver,
                           .relation = &r,
                           .receiver_point = r.first_receiver + steps * r.receiver_increment,
                           .source = &set.sources()[static_cast<std::size_t>(source_of[i])]};
            for (const SpsPoint& receiver : set.receivers()) {
                if (receiver.line_name == r.receiver_line_name &&
                    receiver.point == match.receiver_point && receiver.index == r.receiver_index) {
                    match.status = SpsStatus::kFound;
                    match.receiver = &receiver;
                    break;
                }
            }
            return match;
        }
        return {.status = ffid_seen ? SpsStatus::kNoRelation : SpsStatus::kNoFfid};
    }
};

// A crowded survey, so that everything is there twice or is missing somewhere.
TEST(SpsFind, FindsWhatAPlainSearchFinds) {
    std::mt19937 random(3);
    const auto pick = [&](int first, int last) {
        return first + static_cast<int>(random() % static_cast<unsigned>(last - first + 1));
    };
    std::string sources, receivers, relations;
    for (int i = 0; i < 60; ++i) {
        sources +=
            point_line('S', pick(1, 2), pick(1, 40), static_cast<std::uint8_t>(pick(1, 2)), i);
        for (int k = 0; k < 3; ++k)
            receivers += point_line('R', pick(8, 12), pick(1, 30), 1, i * 3 + k);
        const int channel = pick(1, 20);
        relations += relation_line({pick(1, 30), pick(1, 2), pick(1, 45), channel,
                                    channel + pick(-9, 9), pick(9, 13), pick(1, 30), pick(1, 30)});
    }
    SpsDataSet set = data_set(sources, receivers, relations);
    for (std::size_t i = 1; i < set.receivers().size(); ++i) {
        const SpsPoint& a = set.receivers()[i - 1];
        const SpsPoint& b = set.receivers()[i];
        const auto place = [](const SpsPoint& receiver) {
            const std::string line(receiver.line_name.begin(), receiver.line_name.end());
            return std::tuple(line, receiver.point, receiver.index, receiver.easting);
        };
        ASSERT_LT(place(a), place(b)) << "eastings ascend in the file";
    }
    PlainSearch plain(set);
    std::set<SpsStatus> seen;
    for (int i = 0; i < 20000; ++i) {
        const int ffid = pick(1, 31);
        for (int channel = pick(1, 20), last = channel + pick(0, 5); channel <= last; ++channel) {
            const SpsMatch got = set.find(ffid, channel);
            const SpsMatch wanted = plain.find(ffid, channel);
            ASSERT_EQ(got.status, wanted.status) << "ffid " << ffid << " channel " << channel;
            ASSERT_EQ(got.relation, wanted.relation);
            ASSERT_EQ(got.receiver_point, wanted.receiver_point);
            ASSERT_EQ(got.source, wanted.source);
            ASSERT_EQ(got.receiver, wanted.receiver);
            seen.insert(got.status);
        }
    }
    EXPECT_EQ(seen.size(), 5u) << "every status occurs";
}

TEST(SpsReading, RefusesAFileThatHoldsNoRecord) {
    const std::string point = point_line('S', 1, 11, 1, 531234.5);
    const struct {
        char letter;
        std::string text;
        std::vector<std::string> words;  // of the log
    } kCases[] = {
        {'S', "", {"SOURCE file 's' has no 'S' record."}},
        {'S', "H00 SPS\n\n " + point + " " + point, {"Line 3: 'S' is in column 2", "shifted"}},
        {'S', point_line('R', 1, 11, 1, 0), {"Line 1: column 1 holds 'R', not 'S'"}},
        {'S', "\x01\x02\x03\n", {"Line 1: column 1 holds no printable character"}},
        {'S', "S101", {"line 1, columns 18-25: the point number is not a number"}},
        // A character too many after the letter, and before the coordinates.
        {'S',
         "H00 SPS\nS" + point,
         {"line 2, columns 47-55: the easting is not a number", "No record of the file fits"}},
        {'S', point.substr(0, 46) + ' ' + point.substr(46), {"columns 56-65: the northing"}},
        // A character too few: the index would become the point's last digit.
        {'S', point.substr(0, 1) + point.substr(2), {"line 1: the fields end 1 before"}},
        {'X', 'X' + relation_line({1, 1, 101, 1, 96, 5, 1001, 1096}), {"the last channel is not"}},
        // The same survey with the columns of revision 2.1.
        {'S',
         "H00 SPS format version num.     SPS 2.1\n"
         "S    101.00   1001.00  1E1  12 3.0   0 5   0.0 531234.5 6312345.6 120.3123134501\n",
         {"SOURCE file 's' says that it is of SPS revision 2", "line 2, columns 18-25"}},
        {'X',
         "X     1       511    101.00   1001.001    1   961    201.00   1001.00   1096.001\n",
         {"line 1, columns 8-11: the field record number is not a number"}},
    };
    for (const auto& [letter, text, words] : kCases) {
        LogCapture log;
        SpsDataSet set(kTestReport);
        EXPECT_EQ(read(set, letter, text), -1) << text;
        for (const std::string& word : words) {
            EXPECT_NE(log.text().find(word), std::string::npos) << word << "\n" << log.text();
        }
    }
}

// What is read is shown by what the writer makes of it.
TEST(SpsReading, TakesNumbersWhereverTheyStandInTheirColumns) {
    const std::string point = point_line('S', 1, 101, 1, 3237.5);
    const std::string spread = relation_line({7, 1, 101, 1, 96, 5, 10001, 10096});
    const auto with = [](std::string line, std::size_t column, const std::string& text) {
        return line.replace(column - 1, text.size(), text);
    };
    const std::string whole = with(point, 47, " 531234.0 6312345.0");
    const struct {
        std::string text, written;
    } kCases[] = {
        {with(point, 18, "    101A"), point},
        {with(point, 18, "101     "), point},
        {with(with(whole, 18, "101     "), 47, "531234   6312345   "), whole},
        {with(whole, 47, "531234   6312345   ") + whole, whole + whole},
        {with(whole, 47, "531234.0 6312345   "), whole},
        {with(with(with(spread, 30, "101     "), 39, "1   96  "), 64, "10001   10096   "), spread},
    };
    for (const auto& [text, written] : kCases) {
        LogCapture log;
        SpsDataSet set(kTestReport);
        ASSERT_EQ(read(set, text[0], text), 0) << text << log.text();
        std::string back;
        for (const SpsPoint& record : set.sources()) append_sps_point(back, 'S', record);
        for (const SpsRelation& record : set.relations()) append_sps_relation(back, "1", record);
        EXPECT_EQ(back, written);
        EXPECT_EQ(log.text(), "") << text;
    }
}

TEST(SpsDataSet, KnowsWhenATraceStandsInTwoRelations) {
    const std::string s = point_line('S', 1, 11, 1, 0), r = point_line('R', 5, 101, 1, 0);
    const std::string apart = relation_line({7, 1, 11, 5, 8, 5, 101, 101}) +
                              relation_line({8, 1, 11, 1, 4, 5, 101, 101}) +
                              relation_line({7, 1, 11, 1, 4, 5, 101, 101});
    EXPECT_FALSE(data_set(s, r, apart).ambiguous());
    EXPECT_TRUE(data_set(s, r, apart + relation_line({8, 1, 11, 4, 9, 5, 101, 101})).ambiguous());
}

TEST(SpsReading, KeepsTheRecordsOfAFileThatIsPartlyDamaged) {
    LogCapture log;
    SpsDataSet set(kTestReport);
    const std::string text = "H26\r\nX is no source\r\n" + point_line('S', 1, 11, 1, 10) +
                             "S1                    abc1\r" + point_line('S', 1, 12, 1, 20) +
                             std::string(100000, 'x');
    EXPECT_EQ(read(set, 'S', text), 0);
    ASSERT_EQ(set.sources().size(), 3u);
    EXPECT_EQ(set.sources()[1].point, 0);
    EXPECT_EQ(set.sources()[2].point, 12);
    EXPECT_NE(log.text().find("line 4, columns 18-25"), std::string::npos) << log.text();
    EXPECT_NE(log.text().find("1 of its 3 records"), std::string::npos) << log.text();
}

// Coordinates that begin at their first columns, among fields that end at their last.
TEST(SpsReading, LeftAdjustedCoordinatesAreNoShift) {
    std::string point = point_line('S', 1, 11, 1, 531234.5);
    point.replace(46, 19, "531234.5 6312345.6 ");
    SpsDataSet set(kTestReport);
    ASSERT_EQ(read(set, 'S', point + point), 0);
    EXPECT_EQ(set.sources()[1].easting, 531234.5);
    EXPECT_EQ(set.sources()[1].northing, 6312345.6);
}

TEST(SpsReading, AFileThatCannotBeOpenedIsNamed) {
    const TemporaryFolder folder;
    SpsDataSet set(kTestReport);
    LogCapture log;
    EXPECT_EQ(set.read_sources("no/such.s"), -1);
    EXPECT_EQ(set.read_receivers("no/such.r"), -1);
    EXPECT_EQ(set.read_relations("no/such.x"), -1);
    EXPECT_EQ(write_sps_points("no/such.s", {}, 'S', kTestReport), -1);
    EXPECT_EQ(log.text(),
              "*** ERROR in test: SPS Error: Cannot open SOURCE file 'no/such.s' to read.\n"
              "*** ERROR in test: SPS Error: Cannot open RECEIVER file 'no/such.r' to read.\n"
              "*** ERROR in test: SPS Error: Cannot open RELATION file 'no/such.x' to read.\n"
              "*** ERROR in test: SPS Error: Cannot open 'no/such.s' to write.\n"
              "*** ERROR in test: No such file or directory.\n");
    EXPECT_EQ(set.read_sources(folder.path().string()), -1);
}

TEST(SpsReading, TellsItsProgressAndStopsWhenAsked) {
    const TemporaryFolder folder;
    const std::string path = folder.file("points");
    const SpsPoint points[4] = {};
    ASSERT_EQ(write_sps_points(path, points, 'S', kTestReport), 0);
    SpsDataSet set(kTestReport);
    ProgressWatcher watcher;
    EXPECT_EQ(set.read_sources(path, &watcher), 0);
    EXPECT_EQ(watcher.percents, (std::vector{25, 50, 75, 100}));

    const std::string relation = relation_line({1, 1, 1, 1, 2, 5, 1, 2});
    EXPECT_EQ(read(set, 'X', relation + relation, &watcher), 0);
    watcher.percents.clear();
    watcher.stop_at = 62;  // 25 + 75 / 2: half of the second pass
    EXPECT_EQ(set.prepare(&watcher), -1);
    EXPECT_FALSE(set.prepared());
    EXPECT_EQ(watcher.percents, (std::vector{12, 25, 62}));
    EXPECT_EQ(watcher.captions,
              (std::vector<std::string>{"Reading SPS Source File.", "Reading SPS Relation File.",
                                        "Preparing SPS Files."}));
    EXPECT_EQ(watcher.finished, 3);

    watcher.stop_at = 50;
    EXPECT_EQ(set.read_sources(path, &watcher), -1);
}

TEST(SpsReading, RefusesAPipeAtOnce) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkfifo(folder.file("s").c_str(), 0600), 0);  // which nobody writes to
    SpsDataSet set(kTestReport);
    EXPECT_EQ(set.read_sources(folder.file("s")), -1);
}

}  // namespace
}  // namespace halvern
