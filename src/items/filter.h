#pragma once

#include <array>
#include <cstddef>
#include <optional>

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "numerics/aligned.h"
#include "numerics/real_fft.h"

namespace halvern {

/// Zero-phase band-pass: multiplies each trace's spectrum by a trapezoid with half-cosine ramps
/// between four corner frequencies. The zero frequency and the Nyquist frequency never pass. The
/// transform is of the next power of two, without padding beyond it: a trace of a power of two is
/// filtered as if it repeated itself, on purpose.
class Filter final : public ProcessFlowItem {
public:
    Filter(const FlowSection& section, LogFlag log);

    /// Works the trapezoid out for the line's samples and interval (whole milliseconds). Ends the
    /// job on corners that descend, an interval below 1 ms and a line of less than 2 samples;
    /// corners below zero or above the Nyquist frequency are moved there with a warning, and stay.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Says how many traces passed unfiltered, and how many lost samples, if any.
    void EndRun() override;

private:
    ParameterList Parameters() override;
    bool CheckCorners(float nyquist_hz);

    std::array<float, 4> corners_hz_{};

    // The run's; empty outside it.
    std::optional<numerics::RealFft> fft_;
    numerics::AlignedDoubles gains_;     // [transform length] for the packed spectrum, with the
                                         // transforms' scale in it
    numerics::AlignedDoubles spectrum_;  // [transform length]
    int unfiltered_ = 0;                 // traces with samples that are not finite
    ShortenedTraces shortened_;
};

}  // namespace halvern
