#pragma once

#include <array>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "items/trace_spool.h"
#include "numerics/key_sort.h"

namespace halvern {

/// Brings all traces of a flow into the ascending order of up to four header words. Until the end
/// of the data nothing passes; then everything does. Traces with equal keys stay in the order in
/// which they came, what is not a number comes last.
///
/// Without a buffer only the keys are kept, and the input is read once more, in sorted order; what
/// lies between the input and the sort then works on every trace a second time. Where that would
/// not give the same traces again, and with a buffer, the traces wait in a scratch file. Either way
/// the memory needed is 48 bytes a trace, and with a file a block of it.
class TraceSort final : public BufferingFlowItem {
public:
    TraceSort(const FlowSection& section, LogFlag log);

    void LogParameters() override;

    void ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                      TraceSamples& samples) override;
    /// Looks up the keys and decides between a second reading and the scratch file.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Sorts, and sends everything.
    int FlushAtEnd() override;
    void EndRun() override;

private:
    enum Buffering { kNoBuffer = 0, kBuffer = 1, kFastBuffer = 2 };
    static constexpr int kKeys = 4;

    ParameterList Parameters() override;
    void SendFromInput();
    void SendFromSpool();
    void AnnounceNext();
    void EndJob(const std::string& why);

    int buffering_{};                       // as entered; what is no Buffering is fast, too
    std::array<std::string, kKeys> words_;  // "NONE": no such key

    // Of a run.
    std::array<int, kKeys> key_words_{};
    // One a trace. From the input: arrival number and position there, both from 0. From the spool:
    // the place there, offset as arrival (it ascends alike) and bytes as position.
    std::vector<numerics::KeyRecord> records_;
    bool spooling_ = false;
    TraceSpool spool_;
    bool replaying_ = false;
    int sent_again_ = 0;
    TraceHeaderDefinition* definition_ = nullptr;
    LineHeader line_;       // that spooled traces are sent with
    TraceSamples samples_;  // likewise
};

}  // namespace halvern
