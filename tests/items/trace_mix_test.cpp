#include "items/trace_mix.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;

// One sample a trace; the ensemble word is FFID, the channel tells whose header a trace has.
struct In {
    int ffid;
    float sample;
};

std::vector<float> mixed(const std::vector<std::string>& lines, const std::vector<In>& traces) {
    ItemBench<TraceMix> bench({.samples = 1}, lines);
    int channel = 0;
    for (const auto& [ffid, sample] : traces) {
        bench.set("FFID", ffid);
        bench.set("CHAN", ++channel);
        bench.process({sample});
        // No more traces are kept than the operator needs.
        EXPECT_GE(static_cast<int>(bench.passed().size()), channel - 3);
    }
    bench.finish();
    std::vector<float> out;
    for (const PassedTrace& trace : bench.passed()) out.push_back(trace.samples.at(0));
    for (int i = 0; i < static_cast<int>(out.size()); ++i) EXPECT_EQ(bench.word("CHAN", i), i + 1);
    return out;
}

TEST(TraceMix, MixesNeighboursWithinAnEnsemble) {
    const std::vector<In> one = {{1, 3}, {1, 6}, {1, 12}, {1, 3}};
    const std::vector<In> two = {{1, 3}, {1, 6}, {2, 12}, {2, 3}};
    const struct {
        std::vector<std::string> lines;
        std::vector<In> traces;
        std::vector<float> expected;
    } kCases[] = {
        {{}, one, {4.5f, 7, 7, 7.5f}},
        {{"HEADER=FFID"}, two, {4.5f, 4.5f, 7.5f, 7.5f}},
        {{"TRACES=1"}, one, {3, 6, 12, 3}},
        {{"WEIGHTING=1"}, one, {4, 6.75f, 8.25f, 6}},
        {{"WEIGHTING=2", "WEIGHTS=-1, 2,0"}, one, {3, 9, 18, -6}},
        {{"TRACES=7"}, one, {6, 6, 6, 6}},
        {{"METHOD=1"}, one, {4.5f, 6, 6, 7.5f}},
        {{"TRACES=5", "METHOD=1", "HEADER=FFID"}, one, {6, 4.5f, 4.5f, 6}},
        // A dead trace: it counts in no mean and stays dead, unless that is asked for.
        {{}, {{1, 3}, {1, 0}, {1, 5}}, {3, 0, 5}},
        {{"FILLDEAD=1"}, {{1, 3}, {1, 0}, {1, 5}}, {3, 4, 5}},
        {{"LIVEONLY=0"}, {{1, 3}, {1, 0}, {1, 6}}, {1.5f, 0, 3}},
        {{"METHOD=1", "FILLDEAD=1"}, {{1, 3}, {1, 0}, {1, 5}}, {3, 4, 5}},
    };
    for (const auto& [lines, traces, expected] : kCases) {
        SCOPED_TRACE(testing::PrintToString(lines));
        expect_near(mixed(lines, traces), expected, 1e-6f);
    }
}

TEST(TraceMix, RefusesOperatorsThatAreNone) {
    const struct {
        std::vector<std::string> lines;
        const char* words;
    } kCases[] = {
        {{"TRACES=4"}, "must be odd"},
        {{"TRACES=0"}, "must be odd"},
        {{"WEIGHTING=2", "WEIGHTS=1,2"}, "2 weights for 3 traces"},
        {{"WEIGHTING=2", "WEIGHTS=1,x,1"}, "'x' is not a number"},
        {{"WEIGHTING=2", "WEIGHTS=1,-2,1"}, "sum up to zero"},
        {{"METHOD=2"}, "You have entered '2'"},
        {{"HEADER=NOWORD"}, "Cannot read header 'NOWORD'"},
    };
    for (const auto& [lines, words] : kCases) {
        ItemBench<TraceMix> bench({.samples = 1}, lines);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
}

}  // namespace
}  // namespace halvern
