#include "items/filter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>

#include "flow/item_checks.h"

namespace halvern {

namespace {

// The trapezoid's amplitude at a bin, from the bins of its corners. A ramp of no width is a step
// that keeps its own bin.
double amplitude(std::int64_t bin, const std::array<std::int64_t, 4>& corners) {
    using std::numbers::pi;
    const auto [first, second, third, fourth] = corners;
    if (bin < first || bin > fourth) return 0;
    double gain = 1;
    if (first != second && bin <= second) {
        const auto way = static_cast<double>(bin - first) / static_cast<double>(second - first);
        gain *= (std::sin(pi * way - pi / 2) + 1) / 2;
    }
    if (third != fourth && bin >= third) {
        const auto way = static_cast<double>(bin - third) / static_cast<double>(fourth - third);
        gain *= (std::cos(pi * way) + 1) / 2;
    }
    return gain;
}

const char* corner_help(std::size_t corner) {
    static const auto kTexts = [] {
        std::array<std::string, 4> texts{"first", "second", "third", "fourth"};
        for (std::string& text : texts) {
            text = "Enter the " + text +
                   " frequency.  The following picture represents how the filter works:\n"
                   "   User Input             1        2                3         4\n"
                   "   Scaled Values  ---0%---|-rampon-|------100%------|-rampoff-|---0%---\n";
        }
        return texts;
    }();
    return kTexts[corner].c_str();
}

}  // namespace

Filter::Filter(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kFilter, log) {
    Configure(section);
}

ParameterList Filter::Parameters() {
    return {
        {.key = "FREQ1",
         .format = "%3.1f",
         .value = Bound{&corners_hz_[0], 5},
         .log = "Frequency 1 = %3.1f\n",
         .field = {.label = "Freq1", .prompt = "Frequency #1?", .help = corner_help(0)}},
        {.key = "FREQ2",
         .format = "%3.1f",
         .value = Bound{&corners_hz_[1], 10},
         .log = "Frequency 2 = %3.1f\n",
         .field = {.label = "Freq2", .prompt = "Frequency #2?", .help = corner_help(1)}},
        {.key = "FREQ3",
         .format = "%3.1f",
         .value = Bound{&corners_hz_[2], 80},
         .log = "Frequency 3 = %3.1f\n",
         .field = {.label = "Freq3", .prompt = "Frequency #3?", .help = corner_help(2)}},
        {.key = "FREQ4",
         .format = "%3.1f",
         .value = Bound{&corners_hz_[3], 90},
         .log = "Frequency 4 = %3.1f\n",
         .field = {.label = "Freq4", .prompt = "Frequency #4?", .help = corner_help(3)}},
    };
}

bool Filter::CheckCorners(float nyquist_hz) {
    auto& [first, second, third, fourth] = corners_hz_;
    if (second < first) {
        Error("Frequency 2 should be >= frequency 1.  You entered 1='%3.1f', 2='%3.1f'.\n", first,
              second);
    } else if (third < second) {
        // Both places show the third corner, on purpose.
        Error("Frequency 3 should be >= frequency 2.  You entered 2='%3.1f', 3='%3.1f'.\n", third,
              third);
    } else if (fourth < third) {
        Error("Frequency 4 should be >= frequency 3.  You entered 3='%3.1f', 4='%3.1f'.\n", third,
              fourth);
    } else {
        for (int number = 1; float& corner : corners_hz_) {
            if (corner < 0) {
                Warning(
                    "Frequency %d should be >= 0.  You entered '%3.1f'.  "
                    "It has been set to 0.\n",
                    number, corner);
                corner = 0;
            }
            ++number;
        }
        for (int number = 1; float& corner : corners_hz_) {
            if (corner > nyquist_hz) {
                Warning(
                    "Frequency %d should be < %3.1f.  You entered '%3.1f'.  "
                    "It has been set to %3.1f.\n",
                    number, nyquist_hz, corner, nyquist_hz);
                corner = nyquist_hz;
            }
            ++number;
        }
        return true;
    }
    TerminateJob(kJobError);
    return false;
}

void Filter::PrepareRun(LineHeader& line, TraceHeaderDefinition&, TraceSamples&, int) {
    const double interval_ms = RequireWholeMilliseconds(*this, line);
    if (interval_ms == 0) return;
    if (!CheckCorners(static_cast<float>(1 / (2 * interval_ms / 1000)))) return;
    if (line.samples() < 2) {
        Error("A trace needs at least 2 samples to be filtered.  The line has '%d'.\n",
              line.samples());
        return TerminateJob(kJobError);
    }
    fft_ = numerics::RealFft::make(numerics::RealFft::length_for(line.samples()));
    const std::int64_t length = fft_->length();
    const double step_hz = 1 / (interval_ms / 1000 * static_cast<double>(length));
    std::array<std::int64_t, 4> bins;
    std::ranges::transform(corners_hz_, bins.begin(), [&](float corner) {
        return static_cast<std::int64_t>(std::floor(corner / step_hz + 0.5));
    });

    gains_.assign(static_cast<std::size_t>(length), 0.0);  // the first two for good
    for (std::int64_t bin = 1; bin < length / 2; ++bin) {
        const auto real_part = static_cast<std::size_t>(2 * bin);
        gains_[real_part] = gains_[real_part + 1] =
            amplitude(bin, bins) * 2 / static_cast<double>(length);
    }
    spectrum_.resize(gains_.size());
    unfiltered_ = 0;
    shortened_ = {};
}

int Filter::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    const auto end = std::copy(trace.begin(), trace.end(), spectrum_.begin());
    std::fill(end, spectrum_.end(), 0.0);
    fft_->transform(spectrum_, 1);
    if (!std::isfinite(
            spectrum_[0])) {  // the samples' sum, which any one that is not finite spoils
        if (!IsRepeating()) ++unfiltered_;
        return kPassOn;
    }
    for (std::size_t i = 0; i < spectrum_.size(); ++i) spectrum_[i] *= gains_[i];
    fft_->transform(spectrum_, -1);
    std::transform(spectrum_.begin(), spectrum_.begin() + std::ssize(trace), trace.begin(),
                   [](double sample) { return static_cast<float>(sample); });
    if (!IsRepeating()) shortened_.look(samples, trace);
    samples.set_floats(trace);
    return kPassOn;
}

void Filter::EndRun() {
    if (unfiltered_ > 0) {
        Warning("Traces with samples that are not finite, passed on unfiltered = %d\n",
                unfiltered_);
    }
    shortened_.report(*this);
    fft_.reset();
    gains_ = {};
    spectrum_ = {};
}

}  // namespace halvern
