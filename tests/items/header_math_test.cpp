#include "items/header_math.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

// Traces with FFID 1, 1, 2 and CHAN 5, 6, 7; FOLD afterwards.
std::vector<double> folds(const std::vector<std::string>& lines) {
    ItemBench<HeaderMath> bench({.interval_us = 2000, .samples = 3}, lines);
    std::vector<double> values;
    const std::pair<int, int> kTraces[] = {{1, 5}, {1, 6}, {2, 7}};
    bench.prepare();
    for (const auto& [ffid, chan] : kTraces) {
        bench.set("FFID", ffid);
        bench.set("CHAN", chan);
        bench.set("FOLD", 9);
        bench.process({1, 2, 3});
        values.push_back(bench.word("FOLD"));
    }
    bench.finish();
    EXPECT_THAT(bench.log(), testing::Not(HasSubstr("WARNING")));
    return values;
}

TEST(HeaderMath, WorksWordsOutInOrder) {
    const struct {
        std::vector<std::string> lines;
        std::vector<double> expected;
    } kCases[] = {
        {{}, {9, 9, 9}},
        {{"EQUATION=FOLD = CHAN*10 + FFID"}, {51, 61, 72}},
        {{"EQUATION=CHAN=CHAN+1", "EQUATION=FOLD=CHAN"}, {6, 7, 8}},
        {{"EQUATION=FOLD = 0.5 - CHAN"}, {-5, -6, -7}},  // halves away from zero
        {{"EQUATION=FOLD = samples + interval*10 + trace*100"}, {123, 223, 323}},
        {{"EQUATION=CHAN=0", "EQUATION=FOLD = previous(CHAN)"}, {5, 5, 6}},
        {{"EQUATION=FOLD = first(CHAN)"}, {5, 5, 5}},
        {{"EQUATION=FOLD = first(CHAN, FFID)"}, {5, 5, 7}},
        {{"WHERE=FFID == 1 and CHAN > 5", "EQUATION=FOLD=1"}, {9, 1, 9}},
        {{"WHERE=FFID == 2", "EQUATION=FOLD=1", "WHERE=", "EQUATION=FOLD=FOLD+1"}, {10, 10, 2}},
        {{"EQUATION=FOLD = if(CHAN >= 6, 1, 0)"}, {0, 1, 1}},
    };
    for (const auto& [lines, expected] : kCases) {
        EXPECT_EQ(folds(lines), expected) << testing::PrintToString(lines);
    }
}

TEST(HeaderMath, CountsWhatNoWordCanHold) {
    ItemBench<HeaderMath> bench({.samples = 1},
                                {"EQUATION=FOLD = 40000", "EQUATION=CHAN = 1/FFID",
                                 "EQUATION=CDPN = sqrt(-1)", "WHERE=1/FFID", "EQUATION=FOLD=1"});
    bench.prepare();
    bench.set("FOLD", 7);
    bench.set("CHAN", 8);
    bench.process({1});
    EXPECT_EQ(bench.word("FOLD"), 7);
    EXPECT_EQ(bench.word("CHAN"), 8);
    bench.finish();
    EXPECT_THAT(bench.log(),
                HasSubstr("'FOLD = 40000' gave a number that the word cannot hold in 1"));
    EXPECT_THAT(bench.log(), HasSubstr("'CHAN = 1/FFID' divided by zero in 1 traces: their word"));
    EXPECT_THAT(bench.log(), HasSubstr("'CDPN = sqrt(-1)' gave a number"));
    EXPECT_THAT(bench.log(), HasSubstr("'1/FFID' divided by zero in 1 traces, for which"));
}

TEST(HeaderMath, PointsAtWhatIsWrongBeforeTheFirstTrace) {
    const struct {
        std::string line;
        const char* words;
    } kCases[] = {
        {"EQUATION=FOLD = CHAN +", "FOLD = CHAN +\n*** ERROR in Trace Header Math:              ^"},
        {"EQUATION=FOLD = OFFST", "there is no 'OFFST':"},
        {"EQUATION=FOLDS = 1", "no word 'FOLDS'"},
        {"EQUATION=FOLD == 1", "WORD = expression"},
        {"EQUATION=FOLD = first(CHAN, NO)", "there is no 'first(CHAN, NO)'"},
        {"WHERE=FFID = 1", "'=='"},
        {"EQUATION=FOLD = 1" + std::string(182, '1'), "has been cut"},
    };
    for (const auto& [line, words] : kCases) {
        ItemBench<HeaderMath> bench({.samples = 1}, {line});
        EXPECT_JOB_ERROR(bench.prepare(), words) << line;
    }
}

TEST(HeaderMath, KeepsEquationsAndConditionsInOneOrder) {
    ItemBench<HeaderMath> bench(
        {.samples = 1}, {"WHERE=FFID == 1", "EQUATION=FOLD = CHAN", "WHERE=", "EQUATION=CHAN=1"});
    const std::string text = written(bench.item());
    EXPECT_THAT(text,
                HasSubstr("WHERE=FFID == 1\nEQUATION=FOLD = CHAN\nWHERE=\nEQUATION=CHAN=1\n"));
    const Rows sheet = sheet_of(bench.item());
    EXPECT_EQ(sheet.assign(sheet.cells()), "");
    EXPECT_THAT(written(bench.item()), HasSubstr("WHERE=\nEQUATION=CHAN = 1\n"));
}

// 16-bit samples 4 with the weight 1 are 2; the new weight must not change them.
TEST(HeaderMath, DecodesSamplesBeforeTheirWeightChanges) {
    TraceHeaderDefinition header;
    ASSERT_EQ(header.load(HALVERN_SOURCE_DIR "/header/default"), 0);
    std::array<std::byte, kTraceHeaderBytes> image{};
    header.attach(image.data());
    header.set_double(header.find("WEIGHT"), 1);
    const std::byte raw[] = {std::byte{0}, std::byte{4}};
    TraceSamples samples;
    samples.set_raw(raw, 1, 1, 1, SampleFormat::kInt16);
    LineHeader line;
    line.set_samples(1, 1);
    HeaderMath item({.lines = {"EQUATION=WEIGHT=5"}}, LogFlag::kQuiet);
    item.PrepareRun(line, header, samples, 1);
    item.ProcessTrace(line, header, samples);
    EXPECT_EQ(samples.floats(header)[0], 2);
}

}  // namespace
}  // namespace halvern
