#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "numerics/real_fft.h"

namespace halvern::numerics {

/// Designs the inverse filter of a wavelet from the autocorrelation of a trace through the
/// cepstrum.
///
/// With N the plan's length, h = N / 2 and L + 1 the number of lags r given:
/// 1. a two-sided sequence: r[0] ... r[L] from index 0 on, and r[i] at N - i + 1 for i = 2 ... L:
/// the
///    negative lags lie one place further than a plain wrap-around puts them, on purpose;
/// 2. the logarithm of its amplitude spectrum, an amplitude being at least 2.2e-308 (the smallest
///    normal number), transformed back to the cepstrum c;
/// 3. the cepstrum folded onto positive times, 2 c[i] for i = 1 ... h, and transformed forward;
/// 4. with C the outcome, the spectrum exp(-Re C / 2) exp(-i Im C), whose inverse transform is the
///    filter, of which the first values are kept.
/// Literature: Oppenheim and Schafer, Discrete-Time Signal Processing, chapter on the cepstrum;
/// Claerbout, Fundamentals of Geophysical Data Processing (1976), on Kolmogoroff's factorization.
///
/// The real part of C needs no transform: it is the logarithm of the amplitudes, plus c[h] and
/// minus c[h] in turn. Calls allocate nothing; a plan serves one thread at a time.
class MinimumPhaseInverse {
public:
    /// A plan for this transform length; nothing unless RealFft takes it and it is at least 4.
    [[nodiscard]] static std::optional<MinimumPhaseInverse> make(std::int64_t length);

    /// The first filter.size() values of the filter. False, and nothing done, without lags, with
    /// more than N / 2 of them, or with a filter longer than N. Lags that are not finite give a
    /// filter that is not.
    bool design(std::span<const double> lags, std::span<double> filter);

private:
    MinimumPhaseInverse(RealFft whole, RealFft half);
    void transform_symmetric(double* f);
    void transform_antisymmetric(double* f);

    RealFft whole_;              // of N values
    RealFft half_;               // of N / 2
    AlignedDoubles values_;      // [N]
    AlignedDoubles logarithms_;  // [N / 2 + 1], bin by bin
    AlignedDoubles phases_;      // [N / 2 + 1]; first the logarithms, then the cepstrum
    AlignedDoubles weights_;     // [N / 4 + 1], 1 / (2 sin(2 pi k / N)); all with kBinPadding
};

}  // namespace halvern::numerics
