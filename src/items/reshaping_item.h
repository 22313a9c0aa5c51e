#pragma once

#include <cstdint>

#include "flow/process_flow_item.h"

namespace halvern {

/// What items share that change the length or the sample interval of all traces: the line header
/// and the samples that later items see, and the header words that follow (NUMSAMPS, SAMPRATE,
/// DELAY, and TOTSAMP and STSAMP of traces that store fewer samples than the line has).
class ReshapingFlowItem : public ProcessFlowItem {
public:
    void EndRun() override;

protected:
    using ProcessFlowItem::ProcessFlowItem;

    /// From PrepareRun: every trace gets `samples` samples at `interval`. Ends the job, and gives
    /// false, when the headers cannot hold them.
    bool Reshape(const LineHeader& line, const TraceHeaderDefinition& header, std::int64_t samples,
                 SampleInterval interval);

    /// The array for the samples of the trace at hand; it holds those of the one before.
    std::span<float> NewSamples(const TraceHeaderDefinition& header) {
        return reshaped_.floats(header);
    }

    /// What changed about the trace at hand besides.
    struct Moved {
        std::int64_t stored = 0;  ///< samples before the zeros that a shortened trace ends with
        std::int64_t start = 0;   ///< first of them
        std::int64_t time = 0;    ///< what its first sample is later than before; internal units
    };
    /// Takes the new samples, and sets the header words.
    void FinishTrace(TraceHeaderDefinition& header, const Moved& moved);

    /// STSAMP of the trace at hand.
    std::int64_t StartSample(const TraceHeaderDefinition& header) const {
        return header.get_int(start_sample_);
    }

private:
    void MoveDelay(TraceHeaderDefinition& header, std::int64_t time);

    TraceSamples reshaped_;
    int samples_ = 0;
    int interval_us_ = 0;
    int num_samps_ = -1;  // indexes of header words
    int samp_rate_ = -1;
    int delay_ = -1;
    int trace_id_ = -1;
    int total_samples_ = -1;
    int start_sample_ = -1;
    std::int64_t delays_rounded_ = 0;  // traces whose DELAY is off by a part of a millisecond
    std::int64_t delays_kept_ = 0;     // or stayed, as it cannot hold the time
};

}  // namespace halvern
