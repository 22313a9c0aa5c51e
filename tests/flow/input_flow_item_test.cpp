#include "flow/input_flow_item.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

// Reads the whole numbers from 0, each the first sample of a trace; odd ones are not wanted. Before
// each of them, and before the end, there is nothing to be had once.
class Counting final : public InputFlowItem {
public:
    explicit Counting(std::int64_t count)
        : InputFlowItem(FlowItemKind::kSegyDiskInput, LogFlag::kQuiet), count_(count) {}
    ReadResult afterwards = ReadResult::kEnd;

private:
    void OpenSource() override { line_.set_samples(1, 1); }
    LineHeader& SourceLine() override { return line_; }
    TraceHeaderDefinition& SourceHeader() override { return header_; }
    TraceSamples& SourceSamples() override { return samples_; }
    ReadResult ReadNext() override {
        if (nothing_ = !nothing_; nothing_) return ReadResult::kNothing;
        if (at_ >= count_) return afterwards;
        header_.attach(image_);
        samples_.set_floats(std::vector<float>{static_cast<float>(at_)});
        return at_++ % 2 == 0 ? ReadResult::kTrace : ReadResult::kSkipped;
    }
    std::int64_t SourceTraceCount() override { return count_; }
    bool Reposition(std::int64_t index) override { return (at_ = index) < count_; }

    const std::int64_t count_;
    std::int64_t at_ = 0;
    bool nothing_ = false;
    std::byte image_[kTraceHeaderBytes] = {};
    LineHeader line_;
    TraceHeaderDefinition header_;
    TraceSamples samples_;
};

// Notes the samples and the input's position when they came; pauses or stops when told to.
class Noting final : public ProcessFlowItem {
public:
    Noting() : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet) {}
    void PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) override {
        ++prepared;
    }
    int ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) override {
        seen.push_back(static_cast<int>(samples.floats(header)[0]));
        positions.push_back(GetInputPosition());
        repeated.push_back(IsRepeating());
        if (pause_at == seen.back()) ReadPauseFlag = 1;
        return kPassOn;
    }
    void EndRun() override { ++ended; }
    std::vector<int> seen, positions, repeated;
    int prepared = 0, ended = 0, pause_at = -1;
};

struct Flow {
    explicit Flow(std::int64_t count)
        : input(count), noting(dynamic_cast<Noting&>(input.SetNext(std::make_unique<Noting>()))) {
        ReadPauseFlag = 0;
    }
    Counting input;
    Noting& noting;
};

TEST(Input, SendsWhatIsWantedAndEndsTheChain) {
    LogCapture log;
    Flow flow(5);
    flow.input.RunInput();
    EXPECT_THAT(flow.noting.seen, ElementsAre(0, 2, 4));
    EXPECT_THAT(flow.noting.positions, ElementsAre(1, 3, 5));
    EXPECT_EQ(flow.noting.prepared, 1);
    EXPECT_EQ(flow.noting.ended, 1);
    EXPECT_EQ(log.text(), "Starting Data Read\n");
}

TEST(Input, WithoutTracesPreparesNothingButEndsTheChain) {
    Flow flow(0);
    flow.input.RunInput();
    EXPECT_EQ(flow.noting.prepared, 0);
    EXPECT_EQ(flow.noting.ended, 1);
}

TEST(Input, RehearsesUpToItsFirstTrace) {
    LogCapture log;
    Flow flow(5);
    flow.input.Rehearse();
    EXPECT_EQ(flow.noting.prepared, 1);
    EXPECT_THAT(flow.noting.seen, ElementsAre());
    EXPECT_EQ(flow.noting.ended, 0);
    EXPECT_EQ(log.text(), "");
}

TEST(Input, PausesAndGoesOn) {
    LogCapture log;
    Flow flow(7);
    flow.noting.pause_at = 2;
    flow.input.RunInput();
    EXPECT_THAT(flow.noting.seen, ElementsAre(0, 2));
    EXPECT_EQ(flow.noting.ended, 0);
    flow.input.SetInputRange(4, 4);
    ReadPauseFlag = 0;
    flow.input.ResumeInput();
    EXPECT_THAT(flow.noting.seen, ElementsAre(0, 2, 4));
    EXPECT_EQ(flow.noting.ended, 0);
    flow.input.ResumeInput();
    EXPECT_THAT(flow.noting.seen, ElementsAre(0, 2, 4, 6));
    EXPECT_EQ(flow.noting.prepared, 1);
    EXPECT_EQ(flow.noting.ended, 1);
    EXPECT_THAT(log.text(), HasSubstr("Resuming Data Read\n"));
}

TEST(Input, ReplaysPositionsInTheOrderAsked) {
    Flow flow(5);
    flow.input.RunInput();
    flow.noting.seen.clear();
    flow.noting.positions.clear();
    EXPECT_TRUE(flow.noting.CanReplayInput());
    const std::int64_t order[] = {4, 0, 2};
    EXPECT_EQ(flow.noting.ReplayInput(order), 1);
    EXPECT_THAT(flow.noting.seen, ElementsAre(4, 0, 2));
    EXPECT_THAT(flow.noting.positions, ElementsAre(5, 1, 3));
    const std::int64_t beyond[] = {9};
    EXPECT_EQ(flow.noting.ReplayInput(beyond), 0);
    EXPECT_THAT(flow.noting.repeated, ElementsAre(0, 0, 0, 1, 1, 1));
}

TEST(Input, ThatFailsEndsTheJobAndNotTheChain) {
    Flow flow(3);
    flow.input.afterwards = ReadResult::kFailed;
    EXPECT_JOB_ERROR(flow.input.RunInput(), "Starting Data Read");
    EXPECT_THAT(flow.noting.seen, ElementsAre(0, 2));
    EXPECT_EQ(flow.noting.ended, 0);
}

// In a process of its own: a request to stop is for good.
TEST(InputDeathTest, ThatHasNothingForEverIsStopped) {
    Flow flow(0);
    flow.input.afterwards = ReadResult::kNothing;
    const auto stopped = [&] {
        RequestJobStop();
        std::_Exit(job_error_log([&] { flow.input.RunInput(); }).ends_with("asked to stop.\n"));
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(1), "");
}

TEST(Input, CountsBeyondTheLargestInt) {
    constexpr std::int64_t kMost = std::numeric_limits<int>::max();
    Flow flow(kMost + 4);
    const std::int64_t order[] = {kMost + 2};  // odd: it is not wanted, only counted
    EXPECT_EQ(flow.noting.ReplayInput(order), 1);
    EXPECT_EQ(flow.noting.InputTracesRead(), kMost + 3);
    EXPECT_EQ(flow.noting.GetInputPosition(), kMost);
    EXPECT_EQ(flow.noting.GetInputTraceCount(), kMost);
}

}  // namespace
}  // namespace halvern
