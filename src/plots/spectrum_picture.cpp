#include <algorithm>
#include <cmath>
#include <numbers>

#include "numerics/real_fft.h"
#include "picture/axes.h"
#include "plots/survey_pictures.h"

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

std::string read_spectrum(TraceSource& source, TraceSelection& selection,
                          const std::optional<TimeWindow>& window, Spectrum& spectrum) {
    const double interval_ms = source.line().sample_interval().ms();
    if (!(interval_ms > 0)) return "the file gives no sample interval";
    const int delay = source.definition().find("DELAY");
    std::optional<numerics::RealFft> fft;
    SampleWindow part;
    std::vector<double> work, taper, power;
    while (selection.next()) {
        const std::span<const float> trace = source.floats();
        if (!fft) {
            part = {0, trace.size()};
            if (window) {
                part = samples_in(*window, source.definition().get_double(delay), interval_ms,
                                  trace.size());
            }
            constexpr std::size_t kFewest = 4;
            if (part.count < kFewest) return "the traces have too few samples for a spectrum";
            fft = numerics::RealFft::make(
                numerics::RealFft::length_for(static_cast<std::int64_t>(part.count)));
            if (!fft) return "the traces are too long for a spectrum";
            work.resize(static_cast<std::size_t>(fft->length()));
            taper = taper_of(part.count);
            power.assign(work.size() / 2 + 1, 0.0);
        }
        std::ranges::fill(work, 0.0);
        for (std::size_t i = 0; i < part.count && part.first + i < trace.size(); ++i) {
            const float a = trace[part.first + i];
            if (std::isfinite(a)) work[i] = a * taper[i];
        }
        fft->transform(work, 1);
        power.front() += work[0] * work[0];
        power.back() += work[1] * work[1];
        for (std::size_t k = 1; k + 1 < power.size(); ++k) {
            power[k] += work[2 * k] * work[2 * k] + work[2 * k + 1] * work[2 * k + 1];
        }
        ++spectrum.traces;
    }
    if (spectrum.traces == 0) return selection.nothing();
    const double strongest = std::ranges::max(power);
    if (!(strongest > 0)) return "all samples are zero, or no numbers";
    constexpr double kSilence = 1e-30;  // of the strongest: 300 dB below, for frequencies that miss
    for (const double p : power) {
        spectrum.decibels.push_back(10 * std::log10(std::max(p / strongest, kSilence)));
    }
    spectrum.nyquist_hz = 500 / interval_ms;
    return {};
}

picture::Canvas draw_spectrum(const Spectrum& spectrum, const PictureSize& size,
                              const std::string& title, const std::string& subtitle) {
    constexpr double kDeepest = -80;
    picture::Canvas canvas(size.width, size.height);
    const picture::Rect area{70, 60, size.width - 70 - 24, size.height - 60 - 48};
    const double lowest = std::max(std::ranges::min(spectrum.decibels), kDeepest);
    const picture::Axes axes(canvas, area,
                             {.low = 0, .high = spectrum.nyquist_hz, .label = "Frequency (Hz)"},
                             {.low = std::floor(std::min(lowest, -10.0) / 10) * 10,
                              .high = 3,
                              .label = "Amplitude (dB)"});
    picture::draw_title(canvas, title, subtitle);
    axes.draw_grid();
    picture::Polyline curve;
    const auto last = static_cast<double>(spectrum.decibels.size() - 1);
    for (std::size_t k = 0; k < spectrum.decibels.size(); ++k) {
        curve.push_back({axes.x_of(static_cast<double>(k) / last * spectrum.nyquist_hz),
                         axes.y_of(spectrum.decibels[k])});
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
    return canvas;
}

}  // namespace halvern
