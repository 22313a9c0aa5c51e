#include "numerics/minimum_phase.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "numerics/kernels.h"

namespace halvern::numerics {

std::optional<MinimumPhaseInverse> MinimumPhaseInverse::make(std::int64_t length) {
    if (length < 4) return {};
    std::optional<RealFft> whole = RealFft::make(length);
    std::optional<RealFft> half = RealFft::make(length / 2);
    if (!whole || !half) return {};
    return MinimumPhaseInverse(*std::move(whole), *std::move(half));
}

MinimumPhaseInverse::MinimumPhaseInverse(RealFft whole, RealFft half)
    : whole_(std::move(whole)), half_(std::move(half)) {
    const auto length = static_cast<std::size_t>(whole_.length());
    values_.resize(length + 2 * kBinPadding);
    for (AlignedDoubles* bins : {&logarithms_, &phases_}) {
        bins->resize(length / 2 + 1 + kBinPadding);
    }
    weights_.resize(length / 4 + 1 + kBinPadding);
    for (std::size_t k = 1; k <= length / 4; ++k) {
        const double turns = static_cast<double>(k) / static_cast<double>(length);
        weights_[k] = 0.5 / std::sin(2 * std::numbers::pi * turns);
    }
}

// A symmetric sequence f[0 ... h] of N values has the transform A[k] + O[k] of its even and its odd
// samples, which are real. The sequence f[2j] + (f[2j+1] - f[2j-1]) of h values has the transform
// A[k] + 2i O[k] sin(2 pi k / N). At h - k, O has the other sign.
void MinimumPhaseInverse::transform_symmetric(double* f) {
    const auto h = static_cast<std::size_t>(half_.length());
    double* const x = values_.data();
    double odd_sum = 0, other_sum = 0;  // of every other odd sample, to wait less for additions
    for (std::size_t j = 1; j + 2 < h; j += 4) {
        odd_sum += f[j];
        other_sum += f[j + 2];
    }
    odd_sum += h == 2 ? f[1] : other_sum;
    kernels().fold_symmetric(f, x, h, false);
    x[0] = f[0];
    x[h / 2] = f[h];
    half_.transform({x, h}, 1);
    kernels().unfold_symmetric(x, weights_.data(), f, h, false);
    f[0] = x[0] + 2 * odd_sum;
    f[h / 2] = x[1];
    f[h] = x[0] - 2 * odd_sum;
}

// The same for an antisymmetric sequence, f[0] = f[h] = 0, and the imaginary part of its transform:
// here A[k] is the imaginary part and 2 O[k] sin(2 pi k / N) the real one, with a minus, and A
// changes its sign at h - k.
void MinimumPhaseInverse::transform_antisymmetric(double* f) {
    const auto h = static_cast<std::size_t>(half_.length());
    double* const x = values_.data();
    kernels().fold_symmetric(f, x, h, true);
    x[0] = 2 * f[1];
    x[h / 2] = -2 * f[h - 1];
    half_.transform({x, h}, 1);
    kernels().unfold_symmetric(x, weights_.data(), f, h, true);
    f[0] = f[h] = 0;
    f[h / 2] = -0.5 * x[1];
}

bool MinimumPhaseInverse::design(std::span<const double> lags, std::span<double> filter) {
    const auto n = static_cast<std::size_t>(whole_.length());
    const std::size_t h = n / 2;
    if (lags.empty() || lags.size() > h || filter.size() > n) return false;
    double* const x = values_.data();
    double* const logarithm = logarithms_.data();
    double* const phase = phases_.data();
    const double scale = 1 / static_cast<double>(h);  // a power of two, hence exact

    std::ranges::fill(std::ranges::copy(lags, x).out, x + n, 0.0);
    for (std::size_t i = 2; i < lags.size(); ++i) x[n - i + 1] = lags[i];
    whole_.transform({x, n}, 1);

    // The Nyquist frequency gets a bin of its own for a while.
    x[n] = x[1];
    x[1] = x[n + 1] = 0;
    kernels().log_amplitudes(x, logarithm, h + 1);

    // The cepstrum, and of its doubled positive times the imaginary part of the spectrum: that of
    // the antisymmetric sequence with the cepstrum there and its opposite at negative times.
    for (std::size_t k = 0; k <= h; ++k) phase[k] = logarithm[k] * (0.5 * scale);
    transform_symmetric(phase);
    const double last = phase[h];
    transform_antisymmetric(phase);

    // Re C is the logarithm of the amplitude, and c[h] more or less.
    const double odd = std::exp(last / 2);
    const double even = 1 / odd;
    if (!kernels().inverse_spectrum(logarithm, phase, even, odd, x, h + 1)) {
        for (std::size_t k = 0; k <= h; ++k) {
            const double amplitude = std::exp(-0.5 * logarithm[k]) * (k % 2 == 0 ? even : odd);
            x[2 * k] = std::cos(phase[k]) * amplitude;
            x[2 * k + 1] = -(std::sin(phase[k]) * amplitude);
        }
    }
    x[1] = x[n];
    whole_.inverse_start({x, n}, filter.size());
    for (std::size_t i = 0; i < filter.size(); ++i) filter[i] = x[i] * scale;
    return true;
}

}  // namespace halvern::numerics
