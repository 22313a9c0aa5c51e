#include "flow/input_flow_item.h"

#include "flow/disk_output_flow_item.h"

namespace halvern {

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
        if (SetInputPosition(index) != 1 || !PassNextTrace()) return;
    }
}

void InputFlowItem::Rehearse() {
    if (!CanReposition()) return;  // a tape would be moved
    OpenSource();
    if (ReadNext() == ReadResult::kEnd) return;
    PrepareChain(SourceLine(), SourceHeader(), SourceSamples(), SourceTraceCount());
}

int InputFlowItem::SetInputPosition(int index) {
    if (index < 0 || !Reposition(index)) return 0;
    position_ = index;
    return 1;
}

int InputFlowItem::SetInputRange(int a, int b) {
    range_first_ = a;
    range_last_ = b;
    range_requested_ = true;
    return 1;
}

bool InputFlowItem::CanReplayInput() {
    for (const FlowItem* item = next(); item; item = item->next()) {
        const auto* output = dynamic_cast<const DiskOutputFlowItem*>(item);
        if (output && output->OverwritesInput()) return false;
    }
    return CanReposition();
}

int InputFlowItem::ReplayInput(std::span<const std::int32_t> positions) {
    for (const std::int32_t position : positions) {
        if (SetInputPosition(position) != 1 || !PassNextTrace()) return 0;
    }
    return 1;
}

bool InputFlowItem::PassNextTrace() {
    const ReadResult result = ReadNext();
    if (result == ReadResult::kEnd) return false;
    ++position_;
    if (!prepared_) {  // by the first trace, wanted or not
        prepared_ = true;
        PrepareChain(SourceLine(), SourceHeader(), SourceSamples(), SourceTraceCount());
    }
    if (result == ReadResult::kTrace) SendTrace(SourceLine(), SourceHeader(), SourceSamples());
    if (JobStopRequested()) {
        LogPrint("The job was asked to stop.\n");
        TerminateJob(kJobError);
    }
    return true;
}

void InputFlowItem::ReadLoop() {
    while (PassNextTrace()) {
        if (ReadPauseFlag == 1) return;
    }
    SourceEnded();
    if (FlushChain() == 1) EndChain();
}

}  // namespace halvern
