#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "numerics/real_fft.h"

namespace halvern::numerics {

/// The quadrature of a trace: the imaginary part of its analytic trace, whose spectrum is that of
/// the trace without its negative frequencies. It is what a discrete Fourier transform of exactly
/// the trace's length gives, without padding: the trace counts as periodic, zero frequency and the
/// Nyquist frequency have no quadrature. It is worked out as a circular convolution with
///
///     h[m] = 2 cot(pi m / n) / n              for odd m, 0 for even m, n even
///     h[m] = (cot(pi m / n) - (-1)^m / sin(pi m / n)) / n,   h[0] = 0, n odd
///
/// through transforms of a power of two. Literature: Cizek, IEEE Trans. Audio Electroacoust. 18
/// (1970); Taner, Koehler and Sheriff, Geophysics 44 (1979).
class HilbertTransform {
public:
    /// For traces of `samples` samples. Nothing below 1, or beyond what can be transformed.
    [[nodiscard]] static std::optional<HilbertTransform> make(std::int64_t samples);

    std::int64_t samples() const { return samples_; }

    /// `quadrature` of `trace`, both of samples() values. Allocates nothing; one thread at a time.
    void transform(std::span<const float> trace, std::span<double> quadrature);

private:
    HilbertTransform(std::int64_t samples, RealFft fft) : samples_(samples), fft_(std::move(fft)) {}

    std::int64_t samples_;
    RealFft fft_;
    AlignedDoubles
        kernel_;           // [transform length] spectrum, packed, with the transform's scale in it
    AlignedDoubles work_;  // [transform length]
};

}  // namespace halvern::numerics
