#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "numerics/real_fft.h"

namespace halvern::numerics {

// Numbers that say something about a window of a trace. An empty window, and one of zeros, gives 0.

double root_mean_square(std::span<const float> window);
double mean_magnitude(std::span<const float> window);

/// The sample of largest magnitude, the first of equal ones.
struct Extreme {
    double magnitude = 0;
    std::size_t index = 0;
};
Extreme largest_magnitude(std::span<const float> window);

/// Changes of sign, zeros between them passed over.
std::int64_t zero_crossings(std::span<const float> window);

/// 20 log10 of the quotient of two root mean squares; 0 where either of them is 0.
double decibels(double signal, double noise);

/// The index where a wave sets in: that of the largest quotient of the energies in the `length`
/// samples from it on and the `length` samples before it, moved on to the first sample that is
/// above three times the root mean square of those before it. Nothing in a window of fewer than 2
/// `length` samples, or without energy. Literature: Coppens, Geophysical Prospecting 33 (1985).
std::optional<std::size_t> first_break(std::span<const float> window, std::size_t length);

/// What the power spectrum of a window says. Of a window of zeros everything is 0.
struct SpectralMeasures {
    double dominant_hz = 0;   ///< of the peak, by a parabola through its three values
    double mean_hz = 0;       ///< first moment of power
    double bandwidth_hz = 0;  ///< root of the second moment about the mean
};

/// Works those out for windows of up to a planned length. The window is continued with zeros to at
/// least four times its length, so that the peak is well resolved. Literature: Barnes, Geophysics
/// 58 (1993).
class SpectralMeasurer {
public:
    /// Nothing below one sample, or beyond what can be transformed.
    [[nodiscard]] static std::optional<SpectralMeasurer> make(std::int64_t samples);

    /// Of a window of at most the planned samples `interval_s` seconds apart. Allocates nothing;
    /// one thread at a time.
    SpectralMeasures measure(std::span<const float> window, double interval_s);

private:
    explicit SpectralMeasurer(RealFft fft)
        : fft_(std::move(fft)), work_(static_cast<std::size_t>(fft_.length())) {}

    RealFft fft_;
    AlignedDoubles work_;  // [transform length]
};

}  // namespace halvern::numerics
