#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "numerics/real_fft.h"

namespace halvern::numerics {

/// out[k] = sum over i of a[i] b[i + k], for the lags k = 0 ... out.size() - 1: positive where b
/// lags after a, unscaled, zero where the two no longer overlap. With b = a these are the
/// autocorrelation's lags, out[0] the energy. Only the lags asked for are worked out. Direct: the
/// cost is a.size() times the lags, the terms are added with i rising. `out` must not overlap the
/// others.
void correlate(std::span<const double> a, std::span<const double> b, std::span<double> out);

/// The same for many pairs of the same lengths: direct for few lags, through the spectrum
/// (Stockham, AFIPS 28 (1966)) for many, whichever is faster. The two agree to rounding, with
/// respect to the square root of the product of the energies. Calls allocate nothing; serves one
/// thread at a time.
class Correlator {
public:
    enum class Method { kFaster, kDirect, kSpectral };

    /// For sequences of at most `length` samples and at most `lags` lags. Nothing when either is
    /// below 1 or too large for a transform.
    [[nodiscard]] static std::optional<Correlator> make(std::int64_t length, std::int64_t lags,
                                                        Method method = Method::kFaster);

    /// As the function; false, and nothing done, when a sequence or `out` is longer than planned.
    bool correlate(std::span<const double> a, std::span<const double> b, std::span<double> out);

    /// b = a, which saves one transform.
    bool autocorrelate(std::span<const double> a, std::span<double> out) {
        return correlate(a, a, out);
    }

    [[nodiscard]] bool spectral() const { return fft_.has_value(); }

private:
    Correlator() = default;

    std::size_t length_{};
    std::size_t lags_{};
    std::optional<RealFft> fft_;  // empty: direct
    AlignedDoubles first_;        // [transform length], spectrum of a, then of the product
    AlignedDoubles second_;       // [transform length], spectrum of b
};

}  // namespace halvern::numerics
