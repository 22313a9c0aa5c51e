#include "inspect/trace_statistics.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>

#include "inspect/trace_selection.h"
#include "support/small_segy.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(WordRange, FindsRangeDistinctValuesAndStep) {
    struct Case {
        std::vector<double> values;
        double low, high;
        int distinct;
        double step;
    };
    const Case kCases[] = {
        {{100, 150, 225, 150}, 100, 225, 3, 25},
        {{7, 7, 7}, 7, 7, 1, 0},
        {{-3237, -3212, -262}, -3237, -262, 3, 25},
        {{0.5, 1.5}, 0.5, 1.5, 2, 0},
        {{0, -0.0, 6, 4}, 0, 6, 3, 2},
        {{kNan, 3, kNan, 5}, 3, 5, 2, 2},
        {{-2147483648.0, 2147483647.0}, -2147483648.0, 2147483647.0, 2, 4294967295.0}};
    for (const Case& c : kCases) {
        WordRange range;
        for (const double value : c.values) range.add(value);
        EXPECT_EQ(range.minimum(), c.low);
        EXPECT_EQ(range.maximum(), c.high);
        EXPECT_EQ(range.distinct(), c.distinct) << c.low;
        EXPECT_EQ(range.step(), c.step) << c.low;
    }
}

TEST(WordRange, CountsDistinctValuesUpToItsLimit) {
    WordRange exact, beyond;
    for (int i = 0; i < 4096; ++i) exact.add(i * 3);
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 5000; ++i) beyond.add(i);
    }
    EXPECT_EQ(exact.distinct(), 4096);
    EXPECT_EQ(beyond.distinct(), WordRange::kMostDistinct + 1);
    EXPECT_EQ(beyond.maximum(), 4999);
    EXPECT_TRUE(WordRange().always_zero());
}

// 1, 2, ... n: sums n (n + 1) / 2 and n (n + 1) (2 n + 1) / 6. Lengths around the width of lanes.
TEST(SampleStatistics, OfConsecutiveNumbers) {
    for (const int n : {1, 15, 16, 17, 100}) {
        SampleStatistics statistics;
        std::vector<float> trace;
        for (int i = 1; i <= n; ++i) trace.push_back(static_cast<float>(i));
        statistics.add(trace);
        EXPECT_EQ(statistics.minimum(), 1);
        EXPECT_EQ(statistics.maximum(), n);
        EXPECT_DOUBLE_EQ(statistics.mean(), (n + 1) / 2.0);
        EXPECT_DOUBLE_EQ(statistics.root_mean_square(), std::sqrt((n + 1) * (2 * n + 1) / 6.0));
    }
}

TEST(SampleStatistics, WhatIsNotFiniteIsCountedAndLeftOut) {
    constexpr float kInf = std::numeric_limits<float>::infinity();
    SampleStatistics statistics;
    statistics.add(std::vector<float>(20));                                     // dead
    statistics.add(std::vector<float>{1, -2, 3, 0, float(kNan), kInf, -kInf});  // by hand
    EXPECT_EQ(statistics.samples(), 27);
    EXPECT_EQ(statistics.zeros(), 21);
    EXPECT_EQ(statistics.nans(), 1);
    EXPECT_EQ(statistics.infinities(), 2);
    EXPECT_EQ(statistics.dead_traces(), 1);
    EXPECT_EQ(statistics.first_not_finite(), 2);
    EXPECT_EQ(statistics.minimum(), -2);
    EXPECT_EQ(statistics.maximum(), 3);
    EXPECT_DOUBLE_EQ(statistics.mean(), 2.0 / 24);
    EXPECT_DOUBLE_EQ(statistics.root_mean_square(), std::sqrt(14.0 / 24));

    SampleStatistics none;
    none.add(std::vector<float>{float(kNan)});
    EXPECT_EQ(none.minimum(), 0);
    EXPECT_EQ(none.root_mean_square(), 0);
}

/// Two shots into channels at 100, 125 and 150 m, the last channel of the second one missing.
std::string two_shots(const testing_support::TemporaryFolder& folder) {
    std::vector<testing_support::SmallTrace> traces;
    for (const int ffid : {7, 8}) {
        for (int channel = 1; channel <= 3 - (ffid == 8); ++channel) {
            traces.push_back({.ffid = ffid, .channel = channel, .offset = 75 + 25 * channel});
        }
    }
    return folder.write("two.sgy", testing_support::small_segy(2000, 4, traces));
}

// A description may hold words as floats, whose values are then any: here SRCX is a NaN, RECX 1e30.
TEST(SurveyStatistics, TakesFloatsThatAreNoPlaces) {
    std::array<std::byte, kTraceHeaderBytes> header{};
    header[72] = header[80] = std::byte{0x7F};
    header[73] = std::byte{0xC0};
    header[81] = std::byte{0x49};
    TraceHeaderDefinition definition;
    definition.attach(header.data());
    const testing_support::TemporaryFolder folder;
    const std::string place(51, ' ');  // of the description
    ASSERT_EQ(definition.load(
                  folder.write("floats", place + "SRCX      72 2\n" + place + "RECX      80 2\n")),
              0);
    ASSERT_TRUE(std::isnan(definition.get_double(definition.find("SRCX"))));
    SurveyStatistics survey(definition);
    survey.add();
    EXPECT_FALSE(survey.findings().empty());
}

TEST(SurveyStatistics, TellsWhatTheHeadersHold) {
    const testing_support::TemporaryFolder folder;
    const auto [source, failure] =
        open_trace_source(two_shots(folder), HALVERN_SOURCE_DIR "/header/default");
    ASSERT_TRUE(source) << failure;
    SurveyStatistics survey(source->definition());
    while (source->next()) survey.add();
    std::map<std::string, std::string> found;
    std::map<std::string, double> numbers;
    for (const Fact& finding : survey.findings()) {
        found[finding.name] = finding.text;
        numbers.insert(finding.numbers.begin(), finding.numbers.end());
    }
    EXPECT_EQ(numbers["shots"], 2);
    EXPECT_EQ(numbers["shots FFID maximum"], 8);
    EXPECT_EQ(numbers["traces a shot mean"], 2.5);
    EXPECT_EQ(numbers["offsets maximum"], 150);
    EXPECT_TRUE(std::isnan(numbers["CDPs"]));
    EXPECT_EQ(found["shots"], "2, FFID 7 to 8");
    EXPECT_EQ(found["traces a shot"], "2 to 3, 2.5 on average");
    EXPECT_EQ(found["channels"], "1 to 3");
    EXPECT_EQ(found["offsets"], "100 to 150");
    EXPECT_EQ(found["CDPs"], "not in the headers");
}

TEST(TraceSelection, ByNumberAndByWord) {
    const testing_support::TemporaryFolder folder;
    const std::string path = two_shots(folder);
    struct Case {
        const char *numbers, *word;
        std::vector<std::int64_t> expected;
    };
    const Case kCases[] = {{"", "", {1, 2, 3, 4, 5}},
                           {"2-3,5", "", {2, 3, 5}},
                           {"1-5(2)", "", {1, 3, 5}},
                           {"", "CHAN=2", {2, 5}},
                           {"3-9", "OFFSET=100-125", {4, 5}}};
    for (const auto& [numbers, word, expected] : kCases) {
        TraceSelection selection;
        ASSERT_FALSE(selection.parse(numbers, word));
        const auto source = open_trace_source(path, HALVERN_SOURCE_DIR "/header/default").source;
        ASSERT_FALSE(selection.start(*source));
        std::vector<std::int64_t> found;
        while (selection.next()) found.push_back(selection.number());
        EXPECT_EQ(found, expected) << numbers << ' ' << word;
    }
    for (const auto& [numbers, word] :
         {std::pair{"x", ""}, {"0-3", ""}, {"5-2", ""}, {"", "FFID"}, {"", "=3"}}) {
        EXPECT_TRUE(TraceSelection().parse(numbers, word)) << numbers << word;
    }
    const auto source = open_trace_source(path, HALVERN_SOURCE_DIR "/header/default").source;
    for (const auto& [numbers, word] : {std::pair{"6", ""}, {"", "NOSUCH=1"}}) {
        TraceSelection selection;
        ASSERT_FALSE(selection.parse(numbers, word));
        EXPECT_TRUE(selection.start(*source)) << numbers << word;
    }
}

}  // namespace
}  // namespace halvern
