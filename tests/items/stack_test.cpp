#include "items/stack.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

constexpr BenchLine kTwoSamples{.interval_us = 4000, .samples = 2};
const std::vector<std::string> kSorted{"SORTED=1"};

TEST(Stack, AveragesWhatIsNotZero) {
    ItemBench<Stack> bench(kTwoSamples, kSorted);
    int channel = 4;
    for (const auto& trace : {std::vector<float>{1, 0}, {3, 0}, {0, 0}}) {
        bench.set("CDPN", 100);
        bench.set("CHAN", channel++);
        EXPECT_TRUE(bench.process(trace).empty());
    }
    bench.finish();
    ASSERT_EQ(bench.passed().size(), 1u);
    EXPECT_EQ(bench.passed()[0].samples, (std::vector<float>{2, 0}));
    EXPECT_EQ(bench.word("FOLD"), 3);
    EXPECT_EQ(bench.word("CDPN"), 100);
    EXPECT_EQ(bench.word("CHAN"), 4);  // the header of the group's first trace
    EXPECT_EQ(bench.capture().line_samples, 2);
    EXPECT_EQ(bench.capture().line_interval_us, 4000);
}

TEST(Stack, ClosesAGroupWithEveryChangeOfItsKey) {
    ItemBench<Stack> bench(kTwoSamples, {"SORTED=1", "STACKHEADER=FFID"});
    std::byte* const image = bench.definition().image();
    for (const int key : {5, 5, 7, 5}) {
        bench.set("FFID", key);
        bench.process({static_cast<float>(key), 1});
        EXPECT_EQ(bench.definition().image(), image) << "the sent trace's header stayed attached";
    }
    EXPECT_EQ(bench.passed().size(), 2u);
    bench.finish();
    ASSERT_EQ(bench.passed().size(), 3u);
    const double keys[] = {5, 7, 5};
    const double folds[] = {2, 1, 1};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(bench.word("FFID", i), keys[i]);
        EXPECT_EQ(bench.word("FOLD", i), folds[i]);
        EXPECT_EQ(bench.passed()[static_cast<std::size_t>(i)].samples[0], keys[i]);
    }
}

// In single precision 1e8 + 1 is 1e8, so the middle trace is lost; double precision would keep it.
TEST(Stack, SumsInSinglePrecision) {
    ItemBench<Stack> bench(kTwoSamples, kSorted);
    bench.process({1e8f, 1});
    bench.process({1, 1});
    bench.process({-1e8f, 2});
    bench.finish();
    EXPECT_EQ(bench.passed()[0].samples, (std::vector<float>{0, 4.0f / 3}));
}

TEST(Stack, WithoutTracesSendsNothing) {
    ItemBench<Stack> bench(kTwoSamples, kSorted);
    bench.finish();
    EXPECT_TRUE(bench.passed().empty());
}

TEST(Stack, RefusesUnsortedData) {
    const std::string words =
        "You must add a 'Trace Sort' process before the Stack and change the sort question to "
        "'Not Sorted'.";
    ItemBench<Stack> bench(kTwoSamples, {});
    EXPECT_THAT(bench.log(), HasSubstr("Stack: Stack Header Word = CDPN\n"));
    EXPECT_JOB_ERROR(bench.prepare(), "*** ERROR in Stack: " + words + "\n");
    EXPECT_EQ(bench.item().RefuseParameters(), words);
    ItemBench<Stack> sorted(kTwoSamples, kSorted);
    EXPECT_EQ(sorted.item().RefuseParameters(), "");
}

}  // namespace
}  // namespace halvern
