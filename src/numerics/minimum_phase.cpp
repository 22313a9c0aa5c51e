#include "numerics/minimum_phase.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "numerics/vector_math.h"

namespace halvern::numerics {

namespace {

// Of the smallest normal number, 2^-1022.
constexpr double kLeastLogarithm = -1022 * std::numbers::ln2;

}  // namespace

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
    values_.resize(length);
    for (AlignedDoubles* bins : {&logarithms_, &phases_, &sines_}) bins->resize(length / 2 + 1);
    weights_.resize(length / 4 + 1);
    for (std::size_t k = 1; k < weights_.size(); ++k) {
        const double turns = static_cast<double>(k) / static_cast<double>(length);
        weights_[k] = 0.5 / std::sin(2 * std::numbers::pi * turns);
    }
}

// A symmetric sequence f[0 ... h] of N values has the transform A[k] + O[k] of its even and its odd
// samples, which are real. The sequence f[2j] + (f[2j+1] - f[2j-1]) of h values has the transform
// A[k] + 2i O[k] sin(2 pi k / N). At h - k, O has the other sign.
void MinimumPhaseInverse::transform_symmetric(AlignedDoubles& f) {
    const std::size_t h = f.size() - 1;
    double* const x = values_.data();
    double odd_sum = 0;
    for (std::size_t j = 1; j < h; j += 2) odd_sum += f[j];
    x[0] = f[0];
    for (std::size_t j = 1; j < h / 2; ++j) {
        const double difference = f[2 * j + 1] - f[2 * j - 1];
        x[j] = f[2 * j] + difference;
        x[h - j] = f[2 * j] - difference;
    }
    x[h / 2] = f[h];
    half_.transform(std::span(values_).first(h), 1);
    f[0] = x[0] + 2 * odd_sum;
    f[h] = x[0] - 2 * odd_sum;
    for (std::size_t k = 1; k < h / 2; ++k) {
        const double odd = x[2 * k + 1] * weights_[k];
        f[k] = x[2 * k] + odd;
        f[h - k] = x[2 * k] - odd;
    }
    f[h / 2] = x[1];
}

// The same for an antisymmetric sequence, f[0] = f[h] = 0, and the imaginary part of its transform:
// here A[k] is the imaginary part and 2 O[k] sin(2 pi k / N) the real one, with a minus, and A
// changes its sign at h - k.
void MinimumPhaseInverse::transform_antisymmetric(AlignedDoubles& f) {
    const std::size_t h = f.size() - 1;
    double* const x = values_.data();
    x[0] = 2 * f[1];
    for (std::size_t j = 1; j < h / 2; ++j) {
        const double difference = f[2 * j + 1] - f[2 * j - 1];
        x[j] = difference + f[2 * j];
        x[h - j] = difference - f[2 * j];
    }
    x[h / 2] = -2 * f[h - 1];
    half_.transform(std::span(values_).first(h), 1);
    f[0] = f[h] = 0;
    for (std::size_t k = 1; k < h / 2; ++k) {
        const double odd = x[2 * k] * weights_[k];
        f[k] = x[2 * k + 1] - odd;
        f[h - k] = -x[2 * k + 1] - odd;
    }
    f[h / 2] = -0.5 * x[1];
}

bool MinimumPhaseInverse::design(std::span<const double> lags, std::span<double> filter) {
    const std::size_t n = values_.size();
    const std::size_t h = n / 2;
    if (lags.empty() || lags.size() > h || filter.size() > n) return false;
    double* const x = values_.data();
    double* const bin = logarithms_.data();
    double* const phase = phases_.data();

    std::ranges::fill(std::ranges::copy(lags, x).out, x + n, 0.0);
    for (std::size_t i = 2; i < lags.size(); ++i) x[n - i + 1] = lags[i];
    whole_.transform(values_, 1);

    // Half the logarithm of the square, bounded below, so that a spectral zero stays finite.
    bin[0] = x[0] * x[0];
    bin[h] = x[1] * x[1];
    for (std::size_t k = 1; k < h; ++k) bin[k] = x[2 * k] * x[2 * k] + x[2 * k + 1] * x[2 * k + 1];
    logarithms(logarithms_, logarithms_);
    for (std::size_t k = 0; k <= h; ++k) {
        const double half = bin[k] * 0.5;
        bin[k] = half < kLeastLogarithm ? kLeastLogarithm : half;
        phase[k] = bin[k] / static_cast<double>(n);
    }

    // The cepstrum, and of its doubled positive times the imaginary part of the spectrum: that of
    // the antisymmetric sequence with the cepstrum there and its opposite at negative times.
    transform_symmetric(phases_);
    const double last = phase[h];
    transform_antisymmetric(phases_);

    // exp(-Re C / 2) with the logarithms of the amplitudes for Re C, and what is left of it for
    // bins of even and of odd number.
    for (std::size_t k = 0; k <= h; ++k) bin[k] *= -0.5;
    exponentials(logarithms_, logarithms_);
    const double odd = std::exp(last / 2);
    const double even = 1 / odd;
    sines_and_cosines(phases_, sines_, phases_);
    const double* const sine = sines_.data();
    const double* const cosine = phases_.data();
    x[0] = bin[0] * even;
    x[1] = bin[h] * even;
    for (std::size_t k = 1; k < h; ++k) {
        const double amplitude = bin[k] * (k % 2 == 0 ? even : odd);
        x[2 * k] = cosine[k] * amplitude;
        x[2 * k + 1] = -(sine[k] * amplitude);
    }
    whole_.transform(values_, -1);
    const double scale = 1 / static_cast<double>(h);
    for (std::size_t i = 0; i < filter.size(); ++i) filter[i] = x[i] * scale;
    return true;
}

}  // namespace halvern::numerics
