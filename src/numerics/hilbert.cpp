#include "numerics/hilbert.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern::numerics {

namespace {

double kernel_at(std::int64_t m, std::int64_t n) {
    if (m == 0 || (n % 2 == 0 && m % 2 == 0)) return 0;
    const auto length = static_cast<double>(n);
    const double angle = std::numbers::pi * static_cast<double>(m) / length;
    if (n % 2 == 0) return 2 / (length * std::tan(angle));
    return (std::cos(angle) - (m % 2 == 0 ? 1 : -1)) / (length * std::sin(angle));
}

}  // namespace

std::optional<HilbertTransform> HilbertTransform::make(std::int64_t samples) {
    if (samples < 1) return {};
    std::optional<RealFft> fft =
        RealFft::make(RealFft::length_for(std::max<std::int64_t>(2, 2 * samples)));
    if (!fft) return {};
    HilbertTransform made(samples, std::move(*fft));
    const auto length = static_cast<std::size_t>(made.fft_.length());
    made.kernel_ = AlignedDoubles(length);
    made.work_ = AlignedDoubles(length);
    const std::span<double> kernel(made.kernel_.data(), length);
    std::ranges::fill(kernel, 0.0);
    const double scale = 2 / static_cast<double>(length);  // of a transform there and back
    for (std::int64_t m = 0; m < samples; ++m) {
        const double value = scale * kernel_at(m, samples);
        kernel[static_cast<std::size_t>(m)] = value;
        // The same place of the period before: every output then finds all n samples.
        if (m > 0) kernel[length - static_cast<std::size_t>(samples - m)] = value;
    }
    made.fft_.transform(kernel, 1);
    return made;
}

void HilbertTransform::transform(std::span<const float> trace, std::span<double> quadrature) {
    const std::span<double> work(work_.data(), static_cast<std::size_t>(fft_.length()));
    std::ranges::fill(std::ranges::copy(trace, work.begin()).out, work.end(), 0.0);
    fft_.transform(work, 1);
    work[0] *= kernel_.data()[0];
    work[1] *= kernel_.data()[1];
    for (std::size_t i = 2; i < work.size(); i += 2) {
        const double real = work[i], imaginary = work[i + 1];
        const double* const by = kernel_.data() + i;
        work[i] = real * by[0] - imaginary * by[1];
        work[i + 1] = real * by[1] + imaginary * by[0];
    }
    fft_.inverse_start(work, quadrature.size());
    std::ranges::copy(work.first(quadrature.size()), quadrature.begin());
}

}  // namespace halvern::numerics
