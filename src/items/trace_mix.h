#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"

namespace halvern {

/// Mixes every trace with its neighbours: a weighted running mean, or a running median, over an odd
/// number of traces that follow one another, within an ensemble. Traces leave in their order, each
/// under its own header; at the ends of an ensemble the operator works with the traces that are
/// there. Memory is that of the operator's traces.
class TraceMix final : public BufferingFlowItem {
public:
    TraceMix(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    void ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                      TraceSamples& samples) override;
    /// Ends the job when the operator makes no sense or a header word is missing.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Sends what the last ensemble still holds.
    int FlushAtEnd() override;
    void EndRun() override;
    bool PassesEveryTrace() const override { return false; }

private:
    enum Weighting { kSame = 0, kTriangle = 1, kTyped = 2 };
    enum Method { kMean = 0, kMedian = 1 };

    struct Slot {
        std::array<std::byte, kTraceHeaderBytes> image{};
        std::vector<float> samples;
    };

    ParameterList Parameters() override;
    bool MakeWeights();
    void EndEnsemble();
    void SendMiddle(std::int64_t middle);
    void Mean(std::int64_t middle, std::int64_t first, std::int64_t last);
    void Median(std::int64_t first, std::int64_t last);
    Slot& slot(std::int64_t number) {
        return slots_[static_cast<std::size_t>(number) % slots_.size()];
    }

    int traces_{};       // of the operator
    int weighting_{};    // a Weighting
    std::string typed_;  // weights as entered
    int method_{};       // a Method
    std::string word_;   // that all traces of an ensemble share, or "NONE"
    int live_only_{};    // 1: samples that are zero do not count
    int fill_dead_{};    // 1: nor do they stay zero

    // Of a run.
    std::vector<double> weights_;  // [traces_]
    std::vector<Slot> slots_;      // [traces_], used in turn
    std::vector<double> sums_;     // [samples]
    std::vector<double> norms_;    // [samples]
    std::vector<float> column_;    // [traces_] one sample of each trace
    TraceSamples mixed_;
    TraceHeaderDefinition* definition_ = nullptr;
    LineHeader line_;
    int key_word_ = -1;
    int trace_id_ = -1;
    int total_samples_ = -1;
    double key_{};               // of the open ensemble
    std::int64_t received_ = 0;  // traces of the open ensemble
    std::int64_t sent_ = 0;      // of those
};

}  // namespace halvern
