#include "items/resample.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

TEST(Resample, GivesTheLineItsNewShape) {
    ItemBench<Resample> bench({.interval_us = 4000, .samples = 5}, {"INTERVAL=2.0"});
    const auto out = bench.process({0, 1, 0, -1, 0});
    ASSERT_EQ(out.size(), 9u);
    for (const auto& [index, value] : {std::pair{0, 0.0f}, {2, 1.0f}, {4, 0.0f}, {6, -1.0f}}) {
        EXPECT_EQ(out[static_cast<std::size_t>(index)], value);  // where the times coincide
    }
    EXPECT_EQ(bench.capture().line_interval_us, 2000);
    EXPECT_EQ(bench.capture().line_samples, 9);
    EXPECT_EQ(bench.word("SAMPRATE"), 2000);
    EXPECT_EQ(bench.word("NUMSAMPS"), 9);
}

TEST(Resample, LeavesTracesOfTheSameIntervalAlone) {
    ItemBench<Resample> bench({.interval_us = 4000, .samples = 3}, {"INTERVAL=4"});
    expect_near(bench.process({1, -7, 3}), {1, -7, 3}, 0);
    EXPECT_EQ(bench.word("NUMSAMPS"), 0);
    EXPECT_THAT(bench.log(), HasSubstr("pass as they are"));
}

// Two of four samples are stored: their times are 0 and 4 ms, so that three of the new ones are.
TEST(Resample, KeepsWhatAShortenedTraceSaysOfItself) {
    ItemBench<Resample> bench({.interval_us = 4000, .samples = 4}, {"INTERVAL=2"});
    bench.prepare();
    bench.set("TRACEID", 101);
    bench.process({1, 1});
    EXPECT_EQ(bench.word("TOTSAMP"), 3);
}

TEST(Resample, RefusesWhatHeadersCannotHold) {
    const struct {
        std::vector<std::string> lines;
        const char* words;
    } kCases[] = {
        {{"INTERVAL=0"}, "above 0"},          {{"INTERVAL=66"}, "at most 65.535"},
        {{"INTERVAL=0.0004"}, "samples"},     {{"CORNER=1"}, "at most 0.98"},
        {{"INTERVAL=0.0305"}, "whole micro"}, {{"INTERVAL=x"}, "above 0"},
    };
    for (const auto& [lines, words] : kCases) {
        ItemBench<Resample> bench({.samples = 100}, lines);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
}

}  // namespace
}  // namespace halvern
