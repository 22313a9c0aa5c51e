#pragma once

#include <optional>
#include <vector>

#include "numerics/real_fft.h"
#include "plots/plot.h"
#include "plots/time_axis.h"

namespace halvern {

struct SpectrumOptions {
    std::optional<TimeWindow> window;
};

/// The average amplitude spectrum of traces: the root of their mean power. The ends of each trace
/// are faded over a twentieth of it, so that cutting them off adds no frequencies.
class SpectrumPlot final : public Plot {
public:
    explicit SpectrumPlot(const SpectrumOptions& options) : options_(options) {}

    Fault begin(const LineHeader& line, const TraceHeaderDefinition& definition) override;
    Fault add(const TraceHeaderDefinition& definition, TraceSamples& samples,
              std::int64_t number) override;
    Fault finish() override;
    bool wants_samples() const override { return true; }
    Fault draw(picture::Canvas& canvas, const std::string& title) const override;

    double nyquist_hz() const { return 500 / axis_.interval_ms(); }
    /// From 0 Hz to Nyquist, evenly; the largest is 0. After finish().
    const std::vector<double>& decibels() const { return decibels_; }

private:
    SpectrumOptions options_;
    TimeAxis axis_;
    std::optional<numerics::RealFft> fft_;  // once the first trace has come
    std::size_t count_ = 0;                 // samples of a trace that are looked at
    std::vector<double> work_, taper_, power_, decibels_;
    std::int64_t traces_ = 0;
};

}  // namespace halvern
