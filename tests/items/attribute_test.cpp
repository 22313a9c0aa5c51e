#include "items/attribute.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

// Five whole periods in 100 samples at 4 ms, 12.5 Hz: amplitude and phase are those of the cosine.
std::vector<float> cosine() {
    std::vector<float> trace(100);
    for (std::size_t i = 0; i < trace.size(); ++i) {
        trace[i] = 2 * static_cast<float>(std::cos(static_cast<double>(i) * std::numbers::pi / 10));
    }
    return trace;
}

TEST(Attribute, ReplacesATrace) {
    const struct {
        const char* line;
        float at_0, at_5, at_12, at_99;  // at phases of 0, 90, 216 and -18 degrees
        float tolerance;
    } kCases[] = {
        {"TYPE=0", 2, 2, 2, 2, 1e-6f},
        {"TYPE=1", 0, 90, -144, -18, 1e-4f},
        {"TYPE=2", 12.5f, 12.5f, 12.5f, 12.5f, 1e-4f},
        {"TYPE=3", 1, 0, -0.809017f, 0.951057f, 1e-6f},
    };
    for (const auto& [line, at_0, at_5, at_12, at_99, tolerance] : kCases) {
        ItemBench<Attribute> bench({.interval_us = 4000, .samples = 100}, {line});
        const auto out = bench.process(cosine());
        EXPECT_NEAR(out[0], at_0, tolerance) << line;
        EXPECT_NEAR(out[5], at_5, tolerance) << line;
        EXPECT_NEAR(out[12], at_12, tolerance) << line;
        EXPECT_NEAR(out[99], at_99, tolerance) << line;
    }
}

TEST(Attribute, RunsAMeanOfSquares) {
    ItemBench<Attribute> bench({.interval_us = 4000, .samples = 5}, {"TYPE=4", "WINDOW=12"});
    // Of three samples, two at the ends.
    expect_near(bench.process({3, 0, 0, 0, 2}), {4.5f, 3, 0, 4.0f / 3, 2}, 1e-6f);
}

TEST(Attribute, MeasuresAWindow) {
    // Samples 2 to 4 of six are 3, -4 and 0; the words hold thousandths.
    const std::vector<float> trace = {9, 9, 3, -4, 0, 9};
    const std::pair<const char*, double> kCases[] = {
        {"TYPE=10", std::sqrt(25.0 / 3)},
        {"TYPE=11", 7.0 / 3},
        {"TYPE=12", 4},
        {"TYPE=13", 12},
        {"TYPE=17", 125},
        {"TYPE=18", 20 * std::log10(std::sqrt(25.0 / 3) / 9)},  // noise: the first two samples
    };
    for (const auto& [type, expected] : kCases) {
        // At fixed times, and counted from an offset of 2 m at 500 m/s and 4 ms in a word.
        const std::vector<std::string> kWindows[] = {
            {"START=8", "END=16", "NOISEEND=4"},
            {"END=8", "NOISESTART=-8", "NOISEEND=-4", "VELOCITY=500", "ALONG=SUPHOLE"}};
        for (std::vector<std::string> lines : kWindows) {
            lines.insert(lines.end(), {type, "HEADER=SRCX", "SCALE=1000"});
            ItemBench<Attribute> bench({.interval_us = 4000, .samples = 6}, lines);
            bench.prepare();
            bench.set("OFFSET", -2);
            bench.set("SUPHOLE", 4);
            expect_near(bench.process(trace), trace, 0);
            EXPECT_NEAR(bench.word("SRCX"), 1000 * expected, 0.51) << type;
        }
    }
}

TEST(Attribute, CountsNumbersThatAWordCannotHold) {
    ItemBench<Attribute> bench({.samples = 2}, {"TYPE=12", "HEADER=TRACEID", "SCALE=10000"});
    bench.prepare();
    bench.set("TRACEID", 7);
    bench.process({4, 0});
    EXPECT_EQ(bench.word("TRACEID"), 7);
    bench.process({0, 0});  // a dead trace
    EXPECT_EQ(bench.word("TRACEID"), 0);
    bench.finish();
    EXPECT_THAT(bench.log(), HasSubstr("'TRACEID' cannot hold the number of 1 traces"));
}

TEST(Attribute, RefusesWhatMakesNoSense) {
    const struct {
        std::vector<std::string> lines;
        const char* words;
    } kCases[] = {
        {{"TYPE=5"}, "no attribute '5'"},
        {{"TYPE=10"}, "Cannot read header 'NONE'"},
        {{"TYPE=10", "HEADER=CHAN", "START=8", "END=4"}, "signal window ends before"},
        {{"TYPE=18", "HEADER=CHAN", "NOISEEND=?"}, "noise window '?' is no time"},
        {{"TYPE=10", "HEADER=CHAN", "VELOCITY=-1"}, "must not be negative"},
        {{"TYPE=4", "WINDOW=1"}, "at least one sample"},
    };
    for (const auto& [lines, words] : kCases) {
        ItemBench<Attribute> bench({.samples = 5}, lines);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
}

}  // namespace
}  // namespace halvern
