#include "numerics/trace_measures.h"

#include <algorithm>
#include <cmath>

namespace halvern::numerics {

namespace {

double energy(std::span<const float> window) {
    double sum = 0;
    for (const double sample : window) sum += sample * sample;
    return sum;
}

double mean_over(double sum, std::size_t count) {
    return count > 0 ? sum / static_cast<double>(count) : 0;
}

}  // namespace

double root_mean_square(std::span<const float> window) {
    return std::sqrt(mean_over(energy(window), window.size()));
}

double mean_magnitude(std::span<const float> window) {
    double sum = 0;
    for (const double sample : window) sum += std::fabs(sample);
    return mean_over(sum, window.size());
}

Extreme largest_magnitude(std::span<const float> window) {
    Extreme largest;
    for (std::size_t i = 0; i < window.size(); ++i) {
        const double magnitude = std::fabs(static_cast<double>(window[i]));
        if (magnitude > largest.magnitude) largest = {magnitude, i};
    }
    return largest;
}

std::int64_t zero_crossings(std::span<const float> window) {
    std::int64_t crossings = 0;
    float last = 0;  // that was not zero
    for (const float sample : window) {
        if (sample == 0) continue;
        if (last != 0 && (sample > 0) != (last > 0)) ++crossings;
        last = sample;
    }
    return crossings;
}

double decibels(double signal, double noise) {
    return signal > 0 && noise > 0 ? 20 * std::log10(signal / noise) : 0;
}

std::optional<std::size_t> first_break(std::span<const float> window, std::size_t length) {
    if (length == 0 || window.size() / 2 < length) return {};
    const double all = energy(window);
    if (!(all > 0)) return {};
    // Where there is no noise at all the quotient would be infinite everywhere before the break.
    const double least = 1e-10 * all;
    double before = energy(window.first(length));
    double after = energy(window.subspan(length, length));
    double largest = -1;
    std::size_t at = 0;
    double noise = 0;
    for (std::size_t i = length;; ++i) {
        const double quotient = after / (std::max(before, 0.0) + least);
        if (quotient > largest) {
            largest = quotient;
            at = i;
            noise = before;
        }
        if (i + length >= window.size()) break;
        const auto square = [&](std::size_t k) {
            return static_cast<double>(window[k]) * static_cast<double>(window[k]);
        };
        before += square(i) - square(i - length);
        after += square(i + length) - square(i);
    }
    const double level = 3 * std::sqrt(std::max(noise, 0.0) / static_cast<double>(length));
    for (std::size_t i = at; i < at + length; ++i) {
        if (std::fabs(static_cast<double>(window[i])) > level) return i;
    }
    return at;
}

std::optional<SpectralMeasurer> SpectralMeasurer::make(std::int64_t samples) {
    if (samples < 1) return {};
    std::optional<RealFft> fft = RealFft::make(RealFft::length_for(4 * samples));
    if (!fft) return {};
    return SpectralMeasurer(std::move(*fft));
}

SpectralMeasures SpectralMeasurer::measure(std::span<const float> window, double interval_s) {
    const std::span<double> work(work_);
    std::ranges::fill(std::ranges::copy(window, work.begin()).out, work.end(), 0.0);
    fft_.transform(work, 1);
    const std::size_t nyquist = work.size() / 2;
    const auto power = [&](std::size_t bin) {
        if (bin == 0) return work[0] * work[0];
        if (bin == nyquist) return work[1] * work[1];
        return work[2 * bin] * work[2 * bin] + work[2 * bin + 1] * work[2 * bin + 1];
    };
    double sum = 0, first = 0, second = 0;
    std::size_t peak = 0;
    for (std::size_t bin = 0; bin <= nyquist; ++bin) {
        const auto place = static_cast<double>(bin);
        sum += power(bin);
        first += place * power(bin);
        second += place * place * power(bin);
        if (power(bin) > power(peak)) peak = bin;
    }
    if (!(sum > 0)) return {};
    double dominant = static_cast<double>(peak);
    if (peak > 0 && peak < nyquist) {
        const double low = power(peak - 1), high = power(peak + 1);
        const double bend = low - 2 * power(peak) + high;
        if (bend < 0) dominant += (low - high) / (2 * bend);
    }
    const double bin_hz = 1 / (static_cast<double>(work.size()) * interval_s);
    const double mean = first / sum;
    return {.dominant_hz = dominant * bin_hz,
            .mean_hz = mean * bin_hz,
            .bandwidth_hz = std::sqrt(std::max(0.0, second / sum - mean * mean)) * bin_hz};
}

}  // namespace halvern::numerics
