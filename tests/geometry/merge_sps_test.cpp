#include "geometry/merge_sps.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

constexpr BenchLine kLine{.interval_us = 4000, .samples = 1};

// Line, point and index; static, depth, uphole time and water depth; coordinates and time.
constexpr const char* kSources =
    "S3                    1012    -8 6.5   0 9 310   1000.0    2000.0 -12.0173134501\n";
constexpr const char* kReceivers =
    "R4                    5011     7 0.0   0 520.5   1400.0    2300.0  33.0  0     0\n";
// Files 7 and 8, channels 1 … 4. There is no source 102, and of the receivers only 501.
constexpr const char* kRelations =
    "X1        7003                    1012   1   404                    501     5041\n"
    "X1        8003                    1022   1   404                    501     5041\n";

std::size_t count(const std::string& text, const std::string& words) {
    std::size_t times = 0;
    for (std::size_t at = 0; (at = text.find(words, at)) != text.npos; ++at) ++times;
    return times;
}

class MergeSpsItem : public testing::Test {
protected:
    static void send(ItemBench<MergeSps>& bench, int ffid, int channel) {
        bench.set("FFID", ffid);
        bench.set("CHAN", channel);
        bench.process({1});
    }
    TemporaryFolder folder;
    std::vector<std::string> section = {"SOURCEFILE=" + folder.write("s", kSources),
                                        "RECEIVERFILE=" + folder.write("r", kReceivers),
                                        "RELATIONFILE=" + folder.write("x", kRelations)};
};

TEST_F(MergeSpsItem, WritesWhatTheFilesSay) {
    ItemBench<MergeSps> bench(kLine, section);
    bench.set("RECGROUP", 5);
    send(bench, 7, 1);
    const std::pair<const char*, double> kWords[] = {
        {"SRCX", 1000},      {"SRCY", 2000},  {"SRCELEV", -12}, {"SOUDEPTH", 6},   {"SWATDEP", 310},
        {"SUPHOLE", 9},      {"SSTATIC", -8}, {"SOULINE", 3},   {"SOUPOINT", 101}, {"SOUINDEX", 2},
        {"TIME", 173134501}, {"RECX", 1400},  {"RECY", 2300},   {"RECELEV", 33},   {"RWATDEP", 20},
        {"RUPHOLE", 5},      {"RSTATIC", 7},  {"RECLINE", 4},   {"RECPOINT", 501}, {"RECINDEX", 1},
        {"RECGROUP", 5},     {"OFFSET", 500}};  // 3, 4, 5 times 100
    for (const auto& [word, value] : kWords) EXPECT_EQ(bench.word(word), value) << word;
    // The arc tangent of 3/4 is 0.6435011; times 0.017453293 it is 0.0112312.
    EXPECT_NEAR(bench.word("AZIMUTH"), 89.9887688, 1e-5);
}

TEST_F(MergeSpsItem, ListsWhatItDoesNotFind) {
    for (const bool kill : {true, false}) {
        section.push_back(kill ? "KILLBAD=1" : "KILLBAD=0");
        ItemBench<MergeSps> bench(kLine, section);
        for (const auto& [ffid, channel] :
             {std::pair(12, 1), std::pair(9, 1), std::pair(12, 2), std::pair(7, 5), std::pair(7, 0),
              std::pair(8, 1), std::pair(7, 3)}) {
            send(bench, ffid, channel);
            EXPECT_EQ(kill ? 0 : bench.word("SRCX"), 0);
        }
        EXPECT_EQ(bench.passed().size(), kill ? 0u : 7u);
        bench.finish();
        std::string log = bench.log();
        const std::string warning = "*** WARNING in Merge SPS: ";
        for (std::size_t at; (at = log.find(warning)) != log.npos;) log.erase(at, warning.size());
        EXPECT_THAT(log, HasSubstr("Did not find the following FFID numbers:\n9\n12\n"
                                   "Did not find a relation record (in the .x file) for the "
                                   "following FFID/CHAN pairs:\n7/0\n7/5\n"
                                   "Did not find the following SOURCE coordinates:\n3/102\n"
                                   "Did not find the following RECEIVER coordinates:\n4/503\n"));
    }
}

TEST_F(MergeSpsItem, StopsListingAtAThousand) {
    std::string relations;
    for (int i = 1; i <= 5000; ++i) {
        // No source of line 9 for file 7, no receiver of it for file 8.
        SpsRelation relation{.ffid = 7, .source_line = 9, .source_point = i};
        relation.first_channel = relation.last_channel = i;
        append_sps_relation(relations, "1", relation);
        relation.ffid = 8;
        relation.source_line = 3;
        relation.source_point = 101;
        relation.source_index = 2;
        relation.receiver_line = 9;
        relation.first_receiver = relation.last_receiver = i;
        append_sps_relation(relations, "1", relation);
    }
    folder.write("x", relations);
    ItemBench<MergeSps> bench(kLine, section);
    for (int i = 5000; i >= 1; --i) {
        send(bench, 1000 + i, 1);
        send(bench, 7, 5000 + i);
        send(bench, 7, i);
        send(bench, 8, i);
    }
    for (const char* sort : {"ffid", "relation", "source", "receiver"}) {
        EXPECT_EQ(count(bench.log(), std::string(": 1000 ") + sort + " numbering errors"), 1u);
    }
    EXPECT_EQ(count(bench.log(), "Merge SPS: 5001\n"), 1u);  // of 6000 … 5001
    EXPECT_EQ(count(bench.log(), "Merge SPS: 5000\n"), 0u);
    EXPECT_EQ(count(bench.log(), "Merge SPS: 9/4001\n"), 2u) << "a source and a receiver";
}

TEST_F(MergeSpsItem, EndsTheJobOnFilesItCannotUse) {
    const std::string empty = folder.write("empty", "H00\n");
    for (const auto& [key, name] :
         {std::pair("SOURCEFILE=", "source(.s)"), std::pair("RECEIVERFILE=", "receiver(.r)"),
          std::pair("RELATIONFILE=", "relation(.x)")}) {
        for (const bool missing : {true, false}) {
            const std::string file = missing ? "no/file" : empty;
            section.push_back(key + file);
            ItemBench<MergeSps> bench(kLine, section);
            section.pop_back();
            EXPECT_JOB_ERROR(bench.prepare(), std::string("SPS ") + name + " file '" + file +
                                                  (missing ? "' does not exist.\n" : "'.\n"));
        }
    }
    ItemBench<MergeSps> wordless(kLine, section);
    ASSERT_EQ(wordless.definition().load(
                  folder.write("words", std::string(51, ' ') + "FFID       8 1\n")),
              0);
    EXPECT_JOB_ERROR(wordless.prepare(), "Cannot read header 'CHAN'");
    ItemBench<MergeSps> unused(kLine, section);
    unused.finish();  // no trace came
}

}  // namespace
}  // namespace halvern
