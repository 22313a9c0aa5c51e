#include "plots/spectrum_plot.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "foundation/words.h"
#include "picture/axes.h"

namespace halvern {

namespace {

/// 1 in the middle, falling to 0 at both ends over a twentieth of the length.
std::vector<double> taper_of(std::size_t length) {
    std::vector<double> taper(length, 1.0);
    const std::size_t ramp = length / 20;
    for (std::size_t i = 0; i < ramp; ++i) {
        const double angle = std::numbers::pi * static_cast<double>(i) / static_cast<double>(ramp);
        taper[i] = taper[length - 1 - i] = (1 - std::cos(angle)) / 2;
    }
    return taper;
}

}  // namespace

Fault SpectrumPlot::begin(const LineHeader& line, const TraceHeaderDefinition& definition) {
    axis_ = TimeAxis(line, definition);
    fft_.reset();
    traces_ = 0;
    if (axis_.interval_ms() > 0) return {};
    return Fault("there is no sample interval, which frequencies need");
}

Fault SpectrumPlot::add(const TraceHeaderDefinition& definition, TraceSamples& samples,
                        std::int64_t) {
    const std::span<const float> trace = samples.floats(definition);
    TimeAxis::Samples part{0, trace.size()};
    if (options_.window) {
        part = axis_.in(*options_.window, axis_.start_ms(definition), trace.size());
    }
    if (!fft_) {
        constexpr std::size_t kFewest = 4;
        if (part.count < kFewest) return Fault("the traces have too few samples for a spectrum");
        count_ = part.count;
        fft_ = numerics::RealFft::make(
            numerics::RealFft::length_for(static_cast<std::int64_t>(count_)));
        if (!fft_) return Fault("the traces are too long for a spectrum");
        work_.resize(static_cast<std::size_t>(fft_->length()));
        taper_ = taper_of(count_);
        power_.assign(work_.size() / 2 + 1, 0.0);
    }
    std::ranges::fill(work_, 0.0);
    for (std::size_t i = 0; i < std::min(count_, part.count); ++i) {
        const float a = trace[part.first + i];
        if (std::isfinite(a)) work_[i] = a * taper_[i];
    }
    fft_->transform(work_, 1);
    power_.front() += work_[0] * work_[0];
    power_.back() += work_[1] * work_[1];
    for (std::size_t k = 1; k + 1 < power_.size(); ++k) {
        power_[k] += work_[2 * k] * work_[2 * k] + work_[2 * k + 1] * work_[2 * k + 1];
    }
    ++traces_;
    return {};
}

Fault SpectrumPlot::finish() {
    if (traces_ == 0) return Fault("there is no trace");
    const double strongest = std::ranges::max(power_);
    if (!(strongest > 0)) return Fault("all samples are zero, or no numbers");
    constexpr double kSilence = 1e-30;  // of the strongest: 300 dB below, for frequencies that miss
    decibels_.clear();
    for (const double p : power_) {
        decibels_.push_back(10 * std::log10(std::max(p / strongest, kSilence)));
    }
    return {};
}

Fault SpectrumPlot::draw(picture::Canvas& canvas, const std::string& title) const {
    constexpr double kDeepest = -80;
    const picture::Rect area{70, 60, canvas.width() - 70 - 24, canvas.height() - 60 - 48};
    const double lowest = std::max(std::ranges::min(decibels_), kDeepest);
    const picture::Axes axes(canvas, area,
                             {.low = 0, .high = nyquist_hz(), .label = "Frequency (Hz)"},
                             {.low = std::floor(std::min(lowest, -10.0) / 10) * 10,
                              .high = 3,
                              .label = "Amplitude (dB)"});
    std::string caption = "average amplitude spectrum of " + counted(traces_, "trace");
    if (options_.window) {
        caption += ", " + in_words(options_.window->from_ms) + " to " +
                   in_words(options_.window->to_ms) + " ms";
    }
    picture::draw_title(canvas, title, caption);
    axes.draw_grid();
    picture::Polyline curve;
    const auto last = static_cast<double>(decibels_.size() - 1);
    for (std::size_t k = 0; k < decibels_.size(); ++k) {
        curve.push_back(
            {axes.x_of(static_cast<double>(k) / last * nyquist_hz()), axes.y_of(decibels_[k])});
    }
    picture::Polyline below = curve;
    below.push_back({curve.back().x, double(area.bottom())});
    below.push_back({curve.front().x, double(area.bottom())});
    canvas.set_clip(area);
    canvas.polygon(below, {222, 233, 243});
    axes.draw_grid();
    canvas.stroke({&curve, 1}, 1.5, {33, 102, 172});
    canvas.clear_clip();
    axes.draw_frame();
    axes.draw_x_axis();
    axes.draw_y_axis();
    return {};
}

}  // namespace halvern
