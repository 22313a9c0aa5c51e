#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "flow/flow_file.h"
#include "flow/flow_item_kind.h"
#include "flow/parameter.h"
#include "flow/parameter_dialog.h"
#include "foundation/report.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// Whether a constructor logs, and where the item speaks: the job's items say that they start, list
/// their parameters and speak into the log; the front door's are quiet, and tell what they have to
/// say a reporter that they are given.
class LogFlag {
public:
    static const LogFlag kQuiet;
    static const LogFlag kLog;
    /// Quiet, and everything that the item says goes to `reporter`, which outlives it.
    static LogFlag quiet(const Reporter& reporter) { return {false, &reporter, false}; }
    /// The same, of a flow that is only checked: see FlowItem::IsRehearsal.
    static LogFlag rehearsal(const Reporter& reporter) { return {false, &reporter, true}; }

    bool logs() const { return logs_; }
    const Reporter* reporter() const { return reporter_; }  ///< null: the job's log
    bool is_rehearsal() const { return rehearsal_; }

private:
    constexpr LogFlag(bool logs, const Reporter* reporter, bool rehearsal)
        : logs_(logs), reporter_(reporter), rehearsal_(rehearsal) {}
    bool logs_;
    const Reporter* reporter_;
    bool rehearsal_;
};
inline constexpr LogFlag LogFlag::kQuiet{false, nullptr, false};
inline constexpr LogFlag LogFlag::kLog{true, nullptr, false};

/// A count of traces where an int is asked for.
constexpr int held_in_int(std::int64_t count) {
    return static_cast<int>(std::min<std::int64_t>(count, std::numeric_limits<int>::max()));
}

/// What ProcessTrace answers.
inline constexpr int kPassOn = 1;
inline constexpr int kKeepBack = 0;

/// 1 asks the input to stop after the current trace; a display sets it, the job runner clears it
/// before the head starts or resumes. Process-wide.
extern int ReadPauseFlag;

/// Set from outside (a signal) to end the job as an error after the current trace. Process-wide;
/// safe to call from a signal handler.
void RequestJobStop();
bool JobStopRequested();

/// One step of a flow. Traces are pushed: the head reads them, every item works on a trace in place
/// and sends it on, keeps it back or drops it; no item pulls. Items are created from the sections
/// of a flow file, linked into a chain that owns them, prepared when the first trace comes, flushed
/// and ended after the last one. They are neither copied nor moved.
class FlowItem : public Reporter {
public:
    ~FlowItem() override;  ///< says "Completed Flow Item"
    FlowItem(const FlowItem&) = delete;
    FlowItem& operator=(const FlowItem&) = delete;

    /// The section line ("$" + keyword) and one KEY=value line a parameter.
    virtual void WriteParameters(std::FILE* stream);
    /// Opens the parameter window with the process-wide dialog host over `parent` (passed on
    /// with a and b); *flow_changed becomes 1 when it is accepted. A window that is up already is
    /// refused with a message; without a host nothing happens.
    virtual void ShowInterface(void* parent, int a, int b, int* flow_changed);

    // What an item may ask the input, through the chain. Each forwards to the item before; at a
    // head that is no input the queries give 0 (or null) and the requests do nothing.
    virtual int GetInputTraceCount();
    /// How many traces the input has read so far, passed on or not.
    virtual int GetInputPosition();
    /// Sets the input's trace counter to `index` (from 0) and repositions its reader there.
    virtual int SetInputPosition(int index);
    /// Has the input store a range.
    virtual int SetInputRange(int a, int b);
    /// The input's file name.
    virtual const char* GetInputName();
    /// The path of the header description that the input reads with.
    virtual const char* GetInputHeaderName();
    /// Whether the input can be asked for traces again and every item between it and this one,
    /// this one included, would then make the same of them.
    virtual bool CanReplayInput();
    /// GetInputPosition, which is held at the largest int, without that limit.
    virtual std::int64_t InputTracesRead();
    /// Has the input read the traces at `positions` (from 0, as InputTracesRead numbers them less
    /// one) in that order and push each down the chain again; the items between the input and this
    /// one know them by IsRepeating. 1, or 0 when it cannot.
    virtual int ReplayInput(std::span<const std::int64_t> positions);
    /// Whether this item writes over the records of the flow's own input.
    virtual bool OverwritesInput() const { return false; }

    /// A trace arrives. Default: ProcessTrace, and when that says kPassOn, SendTrace with the
    /// replacement line header and samples where they are set.
    virtual void ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                              TraceSamples& samples);
    /// Once, before the first trace, with its line header, definition and samples; sizes the
    /// item's buffers. `input_traces` is the input's trace count where it knows it, else 0.
    virtual void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                            int input_traces);
    /// Once, after the end of the data, even when no trace came; frees what PrepareRun made.
    virtual void EndRun();
    /// Once at the end of the data: a buffering item sends what it holds. 1 lets the chain end.
    virtual int FlushAtEnd();
    virtual void SetDefaults();
    virtual void ReadParameters(const FlowSection& section);
    virtual void LogParameters();
    /// The work on one trace: kPassOn, or kKeepBack to drop or hold it.
    virtual int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                             TraceSamples& samples);

    /// Counts the trace as sent and delivers it to the next item, if there is one.
    void SendTrace(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples);
    /// Counts the trace as received and calls ReceiveTrace.
    void DeliverTrace(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples);
    /// Prepares this item and then, with its replacements, every later one.
    void PrepareChain(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                      int input_traces);
    /// FlushAtEnd of every later item in order, until one gives 0. 1 when none did.
    int FlushChain();
    /// EndRun of every later item, in order.
    void EndChain();
    /// Links and takes over the item after this one.
    FlowItem& SetNext(std::unique_ptr<FlowItem> item);
    /// Destroys every item after this one, the last one first.
    void DeleteChain();

    /// True while a flow is only checked: PrepareRun then finds everything that can be known before
    /// the first trace, ends the job by it as ever, and makes, empties, locks, writes and deletes
    /// nothing. No trace follows.
    bool IsRehearsal() const { return log_.is_rehearsal(); }

    const char* GetName() const { return entry_.name; }
    FlowItemKind GetKindId() const { return entry_.kind; }
    bool IsExclusive() const { return entry_.base == FlowItemBase::kExclusive; }
    bool IsDisplay() const { return entry_.base == FlowItemBase::kDisplay; }
    int GetReceivedCount() const { return held_in_int(received_); }
    int GetSentCount() const { return held_in_int(sent_); }
    FlowItem* next() const { return next_.get(); }
    FlowItem* previous() const { return previous_; }

    /// What the item says: into the job's log with its name before it, or to the reporter it was
    /// made with. Error does not end the job.
    void Take(Weight weight, std::string_view text) const override;

    /// Whether every trace that arrives leaves again, as one trace and before the next one arrives,
    /// unless its own values forbid it. Items that select, sort, stack, or in another way change
    /// the number or the order of traces say no.
    virtual bool PassesEveryTrace() const { return true; }
    /// Paths of the files that the item reads, as far as it knows them when it is prepared.
    virtual std::vector<std::string> FilesRead() const { return {}; }
    /// Paths of the files that the item writes, from PrepareRun on.
    virtual std::vector<std::string> FilesWritten() const { return {}; }

    /// The item's parameters, declared once. The list points at the item's variables.
    virtual ParameterList Parameters() { return {}; }
    /// The words of the parameter window; default from the item's name.
    virtual DialogTexts WindowTexts() const;
    /// Why the window cannot even be opened, or an empty text.
    virtual std::string WindowObstacle() const { return {}; }
    /// Why the window must not be accepted with the values as they are, or an empty text.
    virtual std::string RefuseParameters() { return {}; }

protected:
    FlowItem(FlowItemKind kind, LogFlag log);

    /// The last step of every constructor: SetDefaults, ReadParameters and, when the log flag says
    /// so, LogParameters.
    void Configure(const FlowSection& section);

    /// Logs one parameter, for items that log theirs in another order or only some of them.
    void LogParameter(std::string_view key);

    /// What later items see instead of what this one received; null: the same.
    void ReplaceLine(std::unique_ptr<LineHeader> line) { replacement_line_ = std::move(line); }
    LineHeader* replacement_line() { return replacement_line_.get(); }
    void ReplaceSamples(TraceSamples* samples) { replacement_samples_ = samples; }

    /// The one step that looks at a request to stop the job, taken by whoever drives traces after
    /// each of them: says so, ends the job and answers true when there is one.
    static bool EndedByRequest();

    /// Whether a trace that comes again would leave this item as it did the first time and leave
    /// nothing behind. Outputs, displays and items that keep traces say no.
    virtual bool RepeatsItself() const { return true; }
    /// Whether the trace at hand has passed this item before: what is counted or logged a trace has
    /// been then.
    bool IsRepeating() const { return repeating_; }

private:
    const FlowItemKindEntry& entry_;
    const LogFlag log_;
    std::unique_ptr<LineHeader> replacement_line_;
    TraceSamples* replacement_samples_ = nullptr;
    std::unique_ptr<FlowItem> next_;
    FlowItem* previous_ = nullptr;
    std::int64_t received_ = 0;
    std::int64_t sent_ = 0;
    bool repeating_ = false;
};

}  // namespace halvern
