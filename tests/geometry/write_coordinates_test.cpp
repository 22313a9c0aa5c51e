#include "geometry/write_coordinates.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "geometry/ascii_input.h"
#include "geometry/merge_p1.h"
#include "geometry/merge_sps.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

using Words = std::vector<std::pair<const char*, double>>;

class WriteCoordinatesItem : public testing::Test {
protected:
    /// Runs traces with these words through the item; what it logged is in `log`.
    void write(std::vector<std::string> keys, const std::vector<Words>& traces) {
        keys.push_back("FILE=" + folder.file("line"));
        ItemBench<WriteCoordinates> bench(kLine, keys);
        for (const Words& words : traces) send(bench, words);
        bench.finish();
        EXPECT_EQ(bench.passed().size(), traces.size());
        log = bench.log();
    }
    template <class Item>
    static void send(ItemBench<Item>& bench, const Words& words) {
        for (const auto& [word, value] : words) bench.set(word, value);
        bench.process({1});
    }
    std::string text(const char* extension) {
        return file_bytes(folder.file(std::string("line") + extension));
    }
    /// The same without header lines.
    std::string records(const char* extension) {
        std::string all = text(extension), kept;
        for (std::size_t at = 0; at < all.size();) {
            const std::size_t end = all.find('\n', at) + 1;
            if (all[at] != 'H' && all[at] != '#') kept += all.substr(at, end - at);
            at = end;
        }
        return kept;
    }
    /// Whether the folder has that many files, none of them unfinished.
    std::size_t files() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder.path()), {}));
    }
    TemporaryFolder folder;
    std::string log;
};

Words trace(int ffid, int channel, int source, int receiver) {
    return {{"FFID", ffid},
            {"CHAN", channel},
            {"SOULINE", 3},
            {"SOUPOINT", source},
            {"SOUINDEX", 1},
            {"SRCX", 1000 + source},
            {"SRCY", 2000},
            {"SRCELEV", -12},
            {"SOUDEPTH", 6},
            {"SWATDEP", 310},
            {"SSTATIC", -8},
            {"SUPHOLE", 9},
            {"TIME", 173134501},
            {"RECLINE", 4},
            {"RECPOINT", receiver},
            {"RECINDEX", 1},
            {"RECX", 5000 + 10 * receiver},
            {"RECY", 2300},
            {"RECELEV", 33},
            {"RWATDEP", 20},
            {"RSTATIC", 7},
            {"RUPHOLE", 5},
            {"COORSCAL", 1},
            {"ELEVSCAL", 1}};
}

TEST_F(WriteCoordinatesItem, WritesSpsRecordsOncePerPointAndRun) {
    // Channels 1 to 3 go on by one receiver, 4 and 5 by two; then a receiver for each of two lines.
    write(
        {"SURVEY=Test area", "DATE=22.11.26"},
        {trace(7, 1, 101, 501), trace(7, 2, 101, 502), trace(7, 3, 101, 503), trace(7, 4, 101, 601),
         trace(7, 5, 101, 603), trace(8, 1, 102, 502), trace(8, 1, 102, 502)});
    EXPECT_EQ(
        records(".s"),
        "S3                    1011    -8 6.0   0 9 310   1101.0    2000.0 -12.0173134501\r\n"
        "S3                    1021    -8 6.0   0 9 310   1102.0    2000.0 -12.0173134501\r\n");
    const std::string receivers = records(".r");
    EXPECT_EQ(
        receivers.substr(0, 82),
        "R4                    5011     7 0.0   0 520.0  10010.0    2300.0  33.0  0     0\r\n");
    EXPECT_EQ(std::ranges::count(receivers, '\n'), 5);
    EXPECT_EQ(
        records(".x"),
        "X1        7113                    1011   1   314                    501     5031\r\n"
        "X1        7113                    1011   4   514                    601     6031\r\n"
        "X1        8113                    1021   1   114                    502     5021\r\n");
    EXPECT_EQ(
        text(".s").substr(0, 164),
        "H00 SPS format version num.     SPS001,22.11.26;                                \r\n"
        "H01 Description of survey area  Test area;                                      \r\n");
    EXPECT_THAT(log, Not(HasSubstr("WARNING")));
    EXPECT_EQ(files(), 3u);
}

TEST_F(WriteCoordinatesItem, SpsFilesLeadMergeSpsBackToTheHeaders) {
    std::vector<Words> traces;
    std::mt19937 random(7);
    for (int ffid = 11; ffid < 19; ++ffid) {
        int receiver = 500 + static_cast<int>(random() % 9u);
        for (int channel = 1; channel <= 24; ++channel) {
            receiver += 1 - 2 * (ffid % 2) + (random() % 5u == 0 ? 3 : 0);
            traces.push_back(trace(ffid, channel, 90 + ffid, receiver));
        }
    }
    write({}, traces);
    const std::string in_order = text(".s") + text(".r") + text(".x");
    std::ranges::shuffle(traces, random);
    write({}, traces);
    EXPECT_EQ(text(".s") + text(".r") + text(".x"), in_order) << "whatever the order of traces";

    ItemBench<MergeSps> bench(
        kLine, {"SOURCEFILE=" + folder.file("line.s"), "RECEIVERFILE=" + folder.file("line.r"),
                "RELATIONFILE=" + folder.file("line.x")});
    for (const Words& words : traces) {
        send(bench, {words[0], words[1]});
        for (const auto& [word, value] : words) {
            if (std::string_view(word).ends_with("SCAL")) continue;
            ASSERT_EQ(bench.word(word), value) << word;
        }
    }
}

TEST_F(WriteCoordinatesItem, SpsLeavesBlankWhatItCannotHold) {
    Words odd = trace(7, 1, 101, 501);
    for (auto& [word, value] : odd) {
        if (std::string_view(word) == "SRCX") value = 123456789;
        if (std::string_view(word) == "SSTATIC") value = -1000;
        if (std::string_view(word) == "SOUDEPTH") value = -6;
        if (std::string_view(word) == "COORSCAL") value = 10;
    }
    Words moved = trace(7, 2, 101, 501);
    write({}, {odd, moved});
    EXPECT_EQ(
        records(".s"),
        "S3                    1011             0 9 310            20000.0 -12.0173134501\r\n");
    EXPECT_THAT(log, HasSubstr("3 values did not fit their columns"));
    EXPECT_THAT(log, HasSubstr("2 points came with several positions"));
    EXPECT_THAT(log, HasSubstr("1 traces have scalars other than 0 and 1"));
}

TEST_F(WriteCoordinatesItem, WritesP190RecordsInTheOrderOfShots) {
    // Tenths in the header; the second streamer's depth is 8.5.
    const auto marine = [](int point, int streamer, int channel) -> Words {
        return {{"SOULINE", 17},
                {"SOUPOINT", point},
                {"CHAN", channel},
                {"RECLINE", streamer},
                {"SRCX", 5312345},
                {"SRCY", 63123456},
                {"SWATDEP", 875},
                {"ELEVSCAL", -10},
                {"RECX", 5310000 + 10 * channel + streamer},
                {"RECY", 63123000},
                {"RECELEV", -80 - 5 * (streamer - 1)},
                {"COORSCAL", -10},
                {"TIME", 0},
                {"DTIME", 123},
                {"HTIME", 3},
                {"MTIME", 45},
                {"STIME", 1}};
    };
    std::vector<Words> traces = {marine(1002, 11, 2), marine(1001, 1, 1), marine(1002, 1, 4),
                                 marine(1002, 1, 1),  marine(1002, 1, 2), marine(1002, 1, 3),
                                 marine(1002, 1, 3)};
    write({"TYPE=1", "STREAMERHEADER=RECLINE", "SURVEY=Area", "DATE=221126"}, traces);
    EXPECT_EQ(records(".p190"),
              "S17             11   1002                      531234.56312345.6  87.5123034501 \n"
              "R   1 531001.16312300.0 8.0   2 531002.16312300.0 8.0   3 531003.16312300.0 8.01\n"
              "R   4 531004.16312300.0 8.0                                                    1\n"
              "R   2 531003.16312300.013.0                                                    B\n"
              "S17             11   1001                      531234.56312345.6  87.5123034501 \n"
              "R   1 531001.16312300.0 8.0                                                    1\n"
              "EOF                                                                             \n");
    EXPECT_THAT(text(".p190"), HasSubstr("H0100SURVEY AREA                Area "));
    EXPECT_THAT(text(".p190"), HasSubstr("H0202TAPE VERSION               UKOOA-P1/90 "));
    EXPECT_THAT(log, Not(HasSubstr("WARNING")));

    ItemBench<MergeP1> bench(kLine, {"FILE=" + folder.file("line.p190"), "STREAMERHEADER=RECLINE",
                                     "CABLEDEPTH=1", "TIMECHECK=2"});
    for (Words words : traces) {
        for (auto& [word, value] : words) {
            const std::string_view name = word;
            const bool cleared = name.ends_with("X") || name.ends_with("Y") || name == "SWATDEP" ||
                                 name == "RECELEV" || name == "COORSCAL";
            bench.set(word, cleared ? 0 : value);
        }
        bench.process({1});
        for (const auto& [word, value] : words) EXPECT_EQ(bench.word(word), value) << word;
    }
    EXPECT_EQ(bench.passed().size(), traces.size());
}

TEST_F(WriteCoordinatesItem, P190HasGeographicalSources) {
    // Hundredths of arc seconds: 2 degrees 30 minutes 0.5 seconds west, 56 59 59.99 north.
    write({"TYPE=1"}, {{{"SOUPOINT", 5},
                        {"SRCX", -900050},
                        {"SRCY", 20519999},
                        {"COORSCAL", -100},
                        {"COORUNIT", 2}}});
    EXPECT_THAT(records(".p190"),
                testing::StartsWith("S0              11      5565959.99N0023000.50W                "
                                    "                  \nEOF"));
    EXPECT_THAT(log, HasSubstr("only their sources"));
}

TEST_F(WriteCoordinatesItem, ColumnsAreReadBackByKey) {
    write({"TYPE=2"}, {trace(7, 1, 101, 501), trace(7, 2, 101, 502)});
    EXPECT_EQ(
        records(".txt"),
        "S           3         101           1         1101.00         2000.00     -12.0       "
        "6.0    310.0\n"
        "R           4         501           1        10010.00         2300.00      33.0       "
        "0.0     20.0\n"
        "R           4         502           1        10020.00         2300.00      33.0       "
        "0.0     20.0\n");
    ItemBench<AsciiInput> bench(kLine,
                                {"INPUTTYPE=1", "FILENAME=" + folder.file("line.txt"),
                                 "MATCHHEADER=0 RECPOINT 15 25 1 R", "DATAHEADER=RECX 39 53 1 R"});
    bench.set("RECPOINT", 502);
    bench.process({1});
    EXPECT_EQ(bench.word("RECX"), 10020);
    write({"TYPE=2", "POINTS=3"}, {{{"CDPN", 9}, {"INLINE", 2}, {"SRCX", 3}, {"RECX", 6}}});
    EXPECT_EQ(records(".txt"),
              "C           2           9           0            4.50            0.00" +
                  std::string(29, ' ') + "\n");
}

TEST_F(WriteCoordinatesItem, EndsTheJobOnWhatItCannotWrite) {
    const std::string file = "FILE=" + folder.file("line");
    struct Case {
        std::vector<std::string> keys;
        std::vector<Words> traces;
        const char* error;
    };
    const Case cases[] = {
        {{}, {}, "has not been properly selected"},
        {{"FILE=" + folder.file("no/such/line")}, {}, "Cannot open file to write"},
        {{file, "TYPE=3"}, {}, "TYPE must be 0 to 2.  You have entered '3'"},
        {{file, "TYPE=1", "POINTHEADER=NOSUCH"}, {}, "Cannot read header 'NOSUCH'"},
        {{file}, {trace(10000, 1, 1, 1)}, "FFID 10000 does not fit the SPS relation file"},
        {{file}, {trace(7, 10000, 1, 1)}, "CHAN 10000 does not fit"},
        {{file, "TYPE=1"}, {trace(7, 10000, 1, 1)}, "The channel 10000 does not fit P1/90"},
        {{file, "TYPE=1"}, {trace(7, 1, 1000000, 1)}, "The point number 1000000 does not fit"},
    };
    for (const Case& c : cases) {
        ItemBench<WriteCoordinates> bench(kLine, c.keys);
        const auto run = [&] {
            bench.prepare();
            for (const Words& words : c.traces) send(bench, words);
        };
        EXPECT_JOB_ERROR(run(), c.error);
    }
    for (const char* type : {"TYPE=0", "TYPE=1"}) {
        ItemBench<WriteCoordinates> bench(kLine, {file, type});
        send(bench, {{"SRCX", 5}});
        send(bench, {{"SRCX", 6}});
        EXPECT_JOB_ERROR(bench.finish(), "is 0 in all traces, although their positions differ");
    }
    EXPECT_EQ(files(), 0u);
}

TEST_F(WriteCoordinatesItem, ARunWithoutTracesLeavesFilesAsTheyWere) {
    folder.write("line.s", "old");
    write({}, {});
    ItemBench<WriteCoordinates> bench(kLine, {"FILE=" + folder.file("line.s")});
    bench.prepare();
    bench.finish();
    EXPECT_THAT(bench.log(), HasSubstr("No trace came"));
    EXPECT_EQ(text(".s"), "old");
    EXPECT_EQ(files(), 1u);
    write({}, {trace(7, 1, 1, 1)});
    EXPECT_NE(text(".s"), "old");
}

}  // namespace
}  // namespace halvern
