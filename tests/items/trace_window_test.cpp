#include "items/trace_window.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

// Five samples 1 to 5 at 4 ms, the first one at 100 ms; PICK is in another word.
struct Case {
    std::vector<std::string> lines;
    double pick_ms;
    std::vector<float> expected;
    double delay_ms;
};

TEST(TraceWindow, CutsAndPads) {
    for (const Case& cut : {
             Case{{}, 0, {1, 2, 3, 4, 5}, 100},
             Case{{"START=4", "END=12"}, 0, {2, 3, 4}, 104},
             Case{{"START=5.9", "END=6"}, 0, {2, 3}, 104},  // 1.475 and 1.5 samples
             Case{{"START=-8", "END=4"}, 0, {0, 0, 1, 2}, 92},
             Case{{"START=12", "END=24"}, 0, {4, 5, 0, 0}, 112},
             Case{{"START=200", "END=204"}, 0, {0, 0}, 300},
             Case{{"START=104", "END=112", "REFERENCE=1"}, 0, {2, 3, 4}, 104},
             Case{{"START=108", "REFERENCE=1"}, 0, {3, 4, 5}, 108},
             Case{{"START=-4", "END=4", "REFERENCE=2", "HEADER=SUPHOLE"}, 8, {2, 3, 4}, 104},
         }) {
        ItemBench<TraceWindow> bench({.samples = 5}, cut.lines);
        bench.set("DELAY", 100);
        bench.set("SUPHOLE", cut.pick_ms);
        expect_near(bench.process({1, 2, 3, 4, 5}), cut.expected, 0);
        EXPECT_EQ(bench.word("DELAY"), cut.delay_ms);
        EXPECT_EQ(bench.word("NUMSAMPS"), static_cast<double>(cut.expected.size()));
        EXPECT_EQ(bench.capture().line_samples, static_cast<int>(cut.expected.size()));
        bench.finish();
        const bool absolute = cut.lines.size() > 1 && cut.lines.back() == "REFERENCE=1";
        EXPECT_EQ(bench.log().find("WARNING") == std::string::npos, absolute) << bench.log();
    }
}

TEST(TraceWindow, KeepsWhatAShortenedTraceSaysOfItself) {
    ItemBench<TraceWindow> bench({.samples = 5}, {"START=4", "END=16"});
    bench.set("TRACEID", 101);
    bench.set("TOTSAMP", 3);
    bench.set("STSAMP", 2);
    bench.prepare();
    bench.set("TRACEID", 101);
    expect_near(bench.process({1, 2, 3}), {2, 3, 0, 0}, 0);
    EXPECT_EQ(bench.word("TOTSAMP"), 2);
}

TEST(TraceWindow, CountsWhatDelayCannotSay) {
    ItemBench<TraceWindow> bench({.interval_us = 500, .samples = 5}, {"START=0.5", "END=1"});
    bench.process({1, 2, 3, 4, 5});  // 0.5 ms
    bench.set("DELAY", 32767);
    bench.process({1, 2, 3, 4, 5});
    EXPECT_EQ(bench.word("DELAY"), 32767);
    bench.finish();
    EXPECT_THAT(bench.log(), HasSubstr("in 1 traces it was rounded"));
    EXPECT_THAT(bench.log(), HasSubstr("first sample of 1 traces: it was kept"));
}

TEST(TraceWindow, RefusesWindowsThatAreNone) {
    const struct {
        std::vector<std::string> lines;
        const char* words;
    } kCases[] = {
        {{"START=12", "END=4"}, "ends before it starts"},
        {{"END=12x"}, "'12x' is no time"},
        {{"END=1e7"}, "They can have 1 to 32767"},
        {{"REFERENCE=3"}, "You have entered '3'"},
        {{"REFERENCE=2", "HEADER=CHAN"}, "needs an end time"},
        {{"REFERENCE=2", "HEADER=NOWORD", "END=4"}, "Cannot read header 'NOWORD'"},
    };
    for (const auto& [lines, words] : kCases) {
        ItemBench<TraceWindow> bench({.samples = 5}, lines);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
}

}  // namespace
}  // namespace halvern
