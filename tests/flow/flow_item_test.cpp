#include "flow/flow_item.h"

#include <gmock/gmock.h>

#include "flow/process_flow_item.h"
#include "flow/unbuilt_flow_item.h"
#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;

using Events = std::vector<std::string>;

// Writes down what happens to it.
class Witness : public ProcessFlowItem {
public:
    Witness(std::string label, Events& events)
        : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet),
          label_(std::move(label)),
          events_(events) {}
    ~Witness() override { say("destroyed"); }
    void PrepareRun(LineHeader& line, TraceHeaderDefinition&, TraceSamples&, int n) override {
        say("prepare " + std::to_string(line.samples()) + " of " + std::to_string(n));
        if (shortens) {
            auto shorter = std::make_unique<LineHeader>(line);
            shorter->set_samples(line.samples() / 2, line.samples() / 2);
            ReplaceLine(std::move(shorter));
        }
    }
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition&, TraceSamples&) override {
        say("trace " + std::to_string(line.samples()));
        return answer;
    }
    int FlushAtEnd() override { return say("flush"), flush_answer; }
    void EndRun() override { say("end"); }

    int answer = kPassOn;
    int flush_answer = 1;
    bool shortens = false;

private:
    void say(const std::string& what) { events_.push_back(label_ + ": " + what); }
    std::string label_;
    Events& events_;
};

struct Chain {
    Events events;
    std::unique_ptr<Witness> head = std::make_unique<Witness>("a", events);
    Witness& second = add("b");
    Witness& third = add("c");
    LineHeader line;
    TraceHeaderDefinition header;
    TraceSamples samples;

    Witness& add(const char* label) {
        FlowItem* last = head.get();
        while (last->next()) last = last->next();
        return static_cast<Witness&>(last->SetNext(std::make_unique<Witness>(label, events)));
    }
};

TEST(Chain, PassesTracesWithReplacementsAndCounts) {
    Chain chain;
    chain.line.set_samples(8, 8);
    chain.second.shortens = true;
    chain.head->PrepareChain(chain.line, chain.header, chain.samples, 5);
    chain.head->SendTrace(chain.line, chain.header, chain.samples);
    chain.second.answer = 2;  // anything but 1 keeps a trace back
    chain.head->SendTrace(chain.line, chain.header, chain.samples);
    EXPECT_THAT(chain.events,
                ElementsAre("a: prepare 8 of 5", "b: prepare 8 of 5", "c: prepare 4 of 5",
                            "b: trace 8", "c: trace 4", "b: trace 8"));
    EXPECT_EQ(chain.head->GetSentCount(), 2);
    EXPECT_EQ(chain.second.GetReceivedCount(), 2);
    EXPECT_EQ(chain.second.GetSentCount(), 1);
    EXPECT_EQ(chain.third.GetReceivedCount(), 1);
}

TEST(Chain, FlushesUntilOneRefusesAndDestroysFromTheTail) {
    Chain chain;
    EXPECT_EQ(chain.head->FlushChain(), 1);
    chain.second.flush_answer = 0;
    EXPECT_EQ(chain.head->FlushChain(), 0);
    chain.head->EndChain();
    chain.head->DeleteChain();
    EXPECT_THAT(chain.events, ElementsAre("b: flush", "c: flush", "b: flush", "b: end", "c: end",
                                          "c: destroyed", "b: destroyed"));
    EXPECT_EQ(chain.head->next(), nullptr);
    EXPECT_EQ(chain.head->FlushChain(), 1);
}

TEST(Chain, QueriesEndAtAHeadThatIsNoInput) {
    Chain chain;
    EXPECT_EQ(chain.third.GetInputTraceCount(), 0);
    EXPECT_EQ(chain.third.GetInputPosition(), 0);
    EXPECT_EQ(chain.third.GetInputName(), nullptr);
    EXPECT_EQ(chain.third.SetInputPosition(3), 0);
    EXPECT_FALSE(chain.third.CanReplayInput());
}

TEST(UnbuiltItem, KeepsItsLinesAndStopsTheJobNamingItself) {
    const FlowSection section = section_of(FlowItemKind::kResample, {"RATE=2", "X"});
    UnbuiltFlowItem item(section, LogFlag::kQuiet);
    EXPECT_EQ(written(item), "$RESAMPLE\nRATE=2\nX\n");
    LineHeader line;
    TraceHeaderDefinition header;
    TraceSamples samples;
    EXPECT_JOB_ERROR(item.PrepareRun(line, header, samples, 0),
                     "*** ERROR in Resample: The flow item 'Resample' is not available");
    EXPECT_JOB_ERROR(item.FlushAtEnd(), "not available");
}

}  // namespace
}  // namespace halvern
