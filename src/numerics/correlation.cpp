#include "numerics/correlation.h"

#include <algorithm>
#include <bit>

#include "numerics/kernels.h"

namespace halvern::numerics {

void correlate(std::span<const double> a, std::span<const double> b, std::span<double> out) {
    kernels().correlate(a.data(), a.size(), b.data(), b.size(), out.data(), out.size());
}

std::optional<Correlator> Correlator::make(std::int64_t length, std::int64_t lags, Method method) {
    if (length < 1 || lags < 1 || length > RealFft::kMaxLength || lags > RealFft::kMaxLength) {
        return {};
    }
    Correlator made;
    made.length_ = static_cast<std::size_t>(length);
    made.lags_ = static_cast<std::size_t>(lags);
    // Room for the lags after the samples keeps what wraps around away from the lags asked for.
    const std::int64_t needed = length + lags - 1;
    const std::int64_t points = RealFft::length_for(needed);
    if (method == Method::kFaster) {
        // Measured: a multiplication and addition of the direct form against a value of a
        // transform and one level of it. The direct form also reads less.
        const double direct = static_cast<double>(length) * static_cast<double>(lags);
        const double spectral =
            4.5 * static_cast<double>(points) *
            static_cast<double>(std::bit_width(static_cast<std::uint64_t>(points)));
        method = points == 0 || direct <= spectral ? Method::kDirect : Method::kSpectral;
    }
    if (method == Method::kSpectral) {
        made.fft_ = RealFft::make(points);
        if (!made.fft_) return {};
        made.first_.resize(static_cast<std::size_t>(points));
        made.second_.resize(static_cast<std::size_t>(points));
    }
    return made;
}

bool Correlator::correlate(std::span<const double> a, std::span<const double> b,
                           std::span<double> out) {
    if (a.size() > length_ || b.size() > length_ || out.size() > lags_) return false;
    if (!fft_) {
        numerics::correlate(a, b, out);
        return true;
    }
    const auto spectrum = [this](std::span<const double> samples, AlignedDoubles& values) {
        std::ranges::fill(std::ranges::copy(samples, values.begin()).out, values.end(), 0.0);
        fft_->transform(values, 1);
    };
    spectrum(a, first_);
    const bool same = a.data() == b.data() && a.size() == b.size();
    if (!same) spectrum(b, second_);
    double* const x = first_.data();
    const double* const y = same ? x : second_.data();
    const std::size_t n = first_.size();
    x[0] *= y[0];
    x[1] *= y[1];
    for (std::size_t k = 2; k < n; k += 2) {  // conj(a) b
        const double re = x[k] * y[k] + x[k + 1] * y[k + 1];
        const double im = x[k] * y[k + 1] - x[k + 1] * y[k];
        x[k] = re;
        x[k + 1] = im;
    }
    fft_->transform(first_, -1);
    const double scale = 2.0 / static_cast<double>(n);
    for (std::size_t k = 0; k < out.size(); ++k) out[k] = x[k] * scale;
    return true;
}

}  // namespace halvern::numerics
