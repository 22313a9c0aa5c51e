#pragma once

#include "flow/flow_item.h"

namespace halvern {

/// An item that works on one trace at a time: its algorithm is ProcessTrace.
class ProcessFlowItem : public FlowItem {
protected:
    using FlowItem::FlowItem;
};

/// An output: a process that leaves something behind, so that its traces cannot be replayed.
class OutputFlowItem : public ProcessFlowItem {
protected:
    using ProcessFlowItem::ProcessFlowItem;
    bool RepeatsItself() const override { return false; }

    /// Whether a file was chosen that may be written: of no name that unfinished files have, not
    /// written by an item before, and read by none unless that is wanted. False after an error
    /// line.
    bool CheckOutputPath(const std::string& path, bool may_be_read) const;
};

/// An item that keeps traces back and sends them itself.
class BufferingFlowItem : public FlowItem {
public:
    void ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                      TraceSamples& samples) override = 0;
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override = 0;
    void EndRun() override = 0;
    bool PassesEveryTrace() const override { return false; }

protected:
    using FlowItem::FlowItem;
    bool RepeatsItself() const override { return false; }
};

/// A display. Every kind overrides the trace operations itself.
class DisplayFlowItem : public FlowItem {
protected:
    using FlowItem::FlowItem;
    bool RepeatsItself() const override { return false; }
};

/// An item that can head a flow and runs it: inputs, exclusive items, ASCII data input.
class RunsFlow {
public:
    virtual ~RunsFlow() = default;
    /// The whole read loop.
    virtual void RunInput() = 0;
    /// Continues a read loop that was paused.
    virtual void ResumeInput() = 0;
    /// In a rehearsal instead of RunInput: prepares the chain as for the first trace, where the
    /// source can be asked without touching it, and sends none.
    virtual void Rehearse() {}
};

/// The only item of its flow; RunInput is its whole run.
class ExclusiveFlowItem : public FlowItem, public RunsFlow {
public:
    void ReceiveTrace(LineHeader&, TraceHeaderDefinition&, TraceSamples&) override {}
    void ResumeInput() override { RunInput(); }

protected:
    using FlowItem::FlowItem;
};

}  // namespace halvern
