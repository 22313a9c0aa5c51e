#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"

namespace halvern {

/// Sums traces that follow one another and share the value of one header word into one trace: the
/// mean of the samples that are not zero, under the header of the group's first trace, with the
/// number of traces in FOLD. The input traces end here. Input that is not sorted by the word gives
/// more and thinner groups.
class Stack final : public BufferingFlowItem {
public:
    Stack(const FlowSection& section, LogFlag log);

    void ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                      TraceSamples& samples) override;
    /// Ends the job unless the user said that the data is sorted, and without the header words.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Sends the last group.
    int FlushAtEnd() override;
    void EndRun() override;

    std::string RefuseParameters() override;

private:
    ParameterList Parameters() override;
    void SendGroup();

    std::string word_;  // whose value a group shares
    int sorted_{};      // 1: the user says that the input is sorted by it

    // Of a run.
    int key_word_ = -1;
    int fold_word_ = -1;
    TraceHeaderDefinition* definition_ = nullptr;
    LineHeader line_;
    std::array<std::byte, kTraceHeaderBytes> image_{};  // of the group's first trace
    std::vector<float> sums_;                           // [samples]
    std::vector<std::int32_t> live_;                    // [samples] contributions that are not zero
    TraceSamples stacked_;
    int traces_ = 0;  // in the open group
    double key_{};    // of the open group
};

}  // namespace halvern
