#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "numerics/real_fft.h"

namespace halvern::numerics {

/// out[i] = sum over j of filter[j] samples[i - j], as convolve works it out, for many pairs of the
/// same lengths: directly for short filters, through the spectrum (Stockham, AFIPS 28 (1966)) for
/// long ones, whichever is faster. The two agree to rounding, and where all samples that a filter
/// of this length reaches are zero, both give zero. Calls allocate nothing; a plan serves one
/// thread at a time.
class Convolver {
public:
    enum class Method { kFaster, kDirect, kSpectral };

    /// For at most `samples` samples and filters of at most `filter` values. Nothing when either is
    /// below 1 or too large for a transform.
    [[nodiscard]] static std::optional<Convolver> make(std::int64_t samples, std::int64_t filter,
                                                       Method method = Method::kFaster);

    /// As many values from the first on as `out` has room for, at most those of the samples' own
    /// times. False, and nothing done, when a span is longer than planned. `out` must not overlap
    /// the others.
    bool convolve(std::span<const double> samples, std::span<const double> filter,
                  std::span<double> out);

    [[nodiscard]] bool spectral() const { return fft_.has_value(); }

private:
    Convolver() = default;

    std::size_t samples_{};
    std::size_t filter_{};
    std::optional<RealFft> fft_;      // empty: direct
    AlignedDoubles sample_spectrum_;  // [transform length], then of the product
    AlignedDoubles filter_spectrum_;  // [transform length]
};

}  // namespace halvern::numerics
