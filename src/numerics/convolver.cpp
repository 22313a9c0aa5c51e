#include "numerics/convolver.h"

#include <algorithm>
#include <bit>

#include "numerics/convolution.h"

namespace halvern::numerics {

std::optional<Convolver> Convolver::make(std::int64_t samples, std::int64_t filter, Method method) {
    if (samples < 1 || filter < 1 || samples > RealFft::kMaxLength ||
        filter > RealFft::kMaxLength) {
        return {};
    }
    Convolver made;
    made.samples_ = static_cast<std::size_t>(samples);
    made.filter_ = static_cast<std::size_t>(filter);
    // What wraps around falls after the samples' own times.
    const std::int64_t points = RealFft::length_for(samples + filter - 1);
    if (method == Method::kFaster) {
        // Measured: a multiplication and addition of the direct form against a value of the three
        // transforms and one level of them.
        const double direct = static_cast<double>(samples) * static_cast<double>(filter);
        const double spectral =
            6.5 * static_cast<double>(points) *
            static_cast<double>(std::bit_width(static_cast<std::uint64_t>(points)));
        method = points == 0 || direct <= spectral ? Method::kDirect : Method::kSpectral;
    }
    if (method == Method::kSpectral) {
        made.fft_ = RealFft::make(points);
        if (!made.fft_) return {};
        made.sample_spectrum_.resize(static_cast<std::size_t>(points));
        made.filter_spectrum_.resize(static_cast<std::size_t>(points));
    }
    return made;
}

bool Convolver::convolve(std::span<const double> samples, std::span<const double> filter,
                         std::span<double> out) {
    if (samples.size() > samples_ || filter.size() > filter_ || out.size() > samples_) return false;
    if (!fft_) {
        numerics::convolve(samples, filter, out);
        return true;
    }
    const auto spectrum = [this](std::span<const double> values, AlignedDoubles& padded) {
        std::ranges::fill(std::ranges::copy(values, padded.begin()).out, padded.end(), 0.0);
        fft_->transform(padded, 1);
        return padded.data();
    };
    double* const x = spectrum(samples, sample_spectrum_);
    const double* const y = spectrum(filter, filter_spectrum_);
    const std::size_t n = sample_spectrum_.size();
    x[0] *= y[0];
    x[1] *= y[1];
    for (std::size_t k = 2; k < n; k += 2) {
        const double re = x[k] * y[k] - x[k + 1] * y[k + 1];
        const double im = x[k] * y[k + 1] + x[k + 1] * y[k];
        x[k] = re;
        x[k + 1] = im;
    }
    fft_->transform(sample_spectrum_, -1);
    const double scale = 2.0 / static_cast<double>(n);
    // The transforms leave rounding where the sum has no term: before the first live sample, and a
    // filter's length after one.
    std::size_t silent = filter.size();  // zeros in a row up to this sample, at most as many
    for (std::size_t i = 0; i < out.size(); ++i) {
        silent = i < samples.size() && samples[i] != 0 ? 0 : std::min(silent + 1, filter.size());
        out[i] = silent < filter.size() ? x[i] * scale : 0;
    }
    return true;
}

}  // namespace halvern::numerics
