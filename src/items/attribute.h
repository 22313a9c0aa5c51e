#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "items/time_window.h"
#include "numerics/hilbert.h"
#include "numerics/trace_measures.h"

namespace halvern {

/// Replaces every trace by an attribute of it (envelope, instantaneous phase or frequency, cosine
/// of phase, running mean square), or measures a window of it and writes the number into a header
/// word.
class Attribute final : public ProcessFlowItem {
public:
    Attribute(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job on an unknown attribute, a window that is none, or a missing header word.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

private:
    enum Type {
        kEnvelope = 0,
        kPhase = 1,
        kFrequency = 2,
        kCosine = 3,
        kMeanSquare = 4,
        kRms = 10,
        kMeanMagnitude = 11,
        kLargest = 12,
        kTimeOfLargest = 13,
        kDominant = 14,
        kMeanFrequency = 15,
        kBandwidth = 16,
        kZeroCrossings = 17,
        kSignalToNoise = 18,
        kFirstBreak = 19,
    };

    ParameterList Parameters() override;
    bool Measures() const { return type_ >= kRms; }
    bool CheckMeasure(const TraceHeaderDefinition& header);
    bool CheckWindow(const TimeWindow& window, const char* what);
    double ReferenceMs(const TraceHeaderDefinition& header) const;
    double Measure(std::span<const float> trace, double reference_ms);
    void Instantaneous(std::span<float> trace);
    void RunningMeanSquare(std::span<float> trace);

    int type_{};  // a Type
    double window_ms_{};
    std::string word_;  // that the number goes into
    double scale_{};
    TimeWindow signal_;
    TimeWindow noise_;
    double velocity_{};  // m/s; 0: the windows do not move with the offset
    std::string along_;  // word with the time that the windows count from, or "NONE"

    // Of a run.
    SampleInterval interval_;
    int target_word_ = -1;  // indexes of header words
    int along_word_ = -1;
    int offset_word_ = -1;
    std::size_t window_ = 0;  // samples of window_ms_
    std::optional<numerics::HilbertTransform> hilbert_;
    std::optional<numerics::SpectralMeasurer> spectrum_;
    std::vector<double> work_;  // [samples]
    HeaderWarning delay_{HeaderWarning::kDelay};
    ShortenedTraces shortened_;
    std::int64_t not_stored_ = 0;
};

}  // namespace halvern
