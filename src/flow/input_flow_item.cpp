#include "flow/input_flow_item.h"

#include <algorithm>

namespace halvern {

namespace {

bool is_trace(ReadResult result) {
    return result == ReadResult::kTrace || result == ReadResult::kSkipped;
}

}  // namespace

void InputFlowItem::RunInput() {
    position_ = 0;
    OpenSource();
    LogPrint("Starting Data Read\n");
    ReadLoop();
}

void InputFlowItem::ResumeInput() {
    LogPrint("Resuming Data Read\n");
    if (!range_requested_) return ReadLoop();
    range_requested_ = false;
    for (int index = range_first_; index <= range_last_; ++index) {
        if (!PassTraceAt(index)) return;
    }
}

void InputFlowItem::Rehearse() {
    if (!CanReposition()) return;  // a tape would be moved
    OpenSource();
    if (!is_trace(AwaitTrace())) return;
    PrepareChain(SourceLine(), SourceHeader(), SourceSamples(), GetInputTraceCount());
}

int InputFlowItem::SetInputPosition(int index) { return MoveTo(index) ? 1 : 0; }

bool InputFlowItem::MoveTo(std::int64_t index) {
    if (index < 0 || !Reposition(index)) return false;
    position_ = index;
    return true;
}

int InputFlowItem::SetInputRange(int a, int b) {
    range_first_ = a;
    range_last_ = b;
    range_requested_ = true;
    return 1;
}

bool InputFlowItem::CanReplayInput() {
    for (const FlowItem* item = next(); item; item = item->next()) {
        if (item->OverwritesInput()) return false;
    }
    return CanReposition();
}

int InputFlowItem::ReplayInput(std::span<const std::int64_t> positions) {
    return std::ranges::all_of(positions, [this](std::int64_t at) { return PassTraceAt(at); });
}

bool InputFlowItem::PassTraceAt(std::int64_t index) {
    if (!MoveTo(index)) return false;
    return is_trace(PassNextTrace());
}

ReadResult InputFlowItem::AwaitTrace() {
    for (;;) {
        const ReadResult result = ReadNext();
        if (result == ReadResult::kFailed) TerminateJob(kJobError);
        if (result != ReadResult::kNothing) return result;
        if (EndedByRequest()) return ReadResult::kFailed;
    }
}

ReadResult InputFlowItem::PassNextTrace() {
    const ReadResult result = AwaitTrace();
    if (!is_trace(result)) return result;
    ++position_;
    if (!prepared_) {  // by the first trace, wanted or not
        prepared_ = true;
        PrepareChain(SourceLine(), SourceHeader(), SourceSamples(), GetInputTraceCount());
    }
    if (result == ReadResult::kTrace) SendTrace(SourceLine(), SourceHeader(), SourceSamples());
    return EndedByRequest() ? ReadResult::kFailed : result;
}

void InputFlowItem::ReadLoop() {
    for (;;) {
        const ReadResult result = PassNextTrace();
        if (result == ReadResult::kFailed) return;
        if (result == ReadResult::kEnd) break;
        if (ReadPauseFlag == 1) return;
    }
    SourceEnded();
    if (FlushChain() == 1) EndChain();
}

}  // namespace halvern
