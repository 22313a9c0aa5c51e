#pragma once

#include <cstdint>
#include <span>

#include "flow/process_flow_item.h"

namespace halvern {

/// What a read of an input gave.
enum class ReadResult {
    kTrace,    ///< a trace to send on
    kSkipped,  ///< a trace was read, and is not wanted
    kNothing,  ///< no trace yet, and the data may go on: ask again
    kEnd,      ///< no more traces
    kFailed,   ///< the data cannot be read on, as the kind has said with Error: the job ends
};

/// The head of a flow: opens its source and pushes every trace of it down the chain. A kind fills
/// the protected places; the loop, pausing, replay and the end of the data are the same for all.
class InputFlowItem : public FlowItem, public RunsFlow {
public:
    /// Opens the source, says "Starting Data Read" and reads until the end, a pause or a request to
    /// stop the job. At the end of the data the chain is flushed and, if every item agrees, ended.
    void RunInput() override;
    /// Says "Resuming Data Read" and goes on; record numbers from SetInputRange or ReplayInput that
    /// are still to be read come in their order.
    void ResumeInput() override;
    /// Opens the source, unless it is a tape, and prepares the chain by its first trace.
    void Rehearse() override;

    int GetInputTraceCount() override { return held_in_int(SourceTraceCount()); }
    std::int64_t InputTracesRead() override { return position_; }
    int SetInputPosition(int index) override;
    int SetInputRange(int a, int b) override;
    /// Not when a later item writes over this very input: its records are no longer what they were.
    bool CanReplayInput() override;
    int ReplayInput(std::span<const std::int64_t> positions) override;

    void ReceiveTrace(LineHeader&, TraceHeaderDefinition&, TraceSamples&) override {}

protected:
    using FlowItem::FlowItem;

    /// Opens the source; ends the job, with the kind's own words, when it cannot. After it the
    /// three accessors below answer.
    virtual void OpenSource() = 0;
    virtual LineHeader& SourceLine() = 0;
    virtual TraceHeaderDefinition& SourceHeader() = 0;  ///< image of the current trace attached
    virtual TraceSamples& SourceSamples() = 0;
    /// Reads the next trace. It comes back, with kNothing at the worst, after every bounded piece
    /// of work: only between two calls is a request to stop the job looked at.
    virtual ReadResult ReadNext() = 0;
    /// Traces of the source, 0 when that is not known (a tape).
    virtual std::int64_t SourceTraceCount() { return 0; }
    /// Moves the source so that ReadNext gives trace `index` (from 0). False when it cannot.
    virtual bool Reposition(std::int64_t index) = 0;
    virtual bool CanReposition() const { return true; }
    /// Called once at the end of the data, before the chain is flushed.
    virtual void SourceEnded() {}

    /// Makes trace `index` (from 0) the next one and counts from there. False when it cannot.
    bool MoveTo(std::int64_t index);

private:
    void ReadLoop();
    // Neither answers kNothing; after kFailed the job has been ended.
    ReadResult AwaitTrace();
    ReadResult PassNextTrace();
    bool PassTraceAt(std::int64_t index);

    std::int64_t position_ = 0;  // traces read so far
    bool prepared_ = false;
    int range_first_ = 0;
    int range_last_ = 0;
    bool range_requested_ = false;
};

}  // namespace halvern
