#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace halvern::testing_support {

/// The minimum-phase inverse of an autocorrelation's lags, of n values: the description's four
/// steps on whole complex spectra in extended precision, each transform as its sums.
inline std::vector<long double> minimum_phase_steps(const std::vector<long double>& lags,
                                                    std::size_t n) {
    using Complex = std::complex<long double>;
    std::vector<Complex> x(n), root(n);  // root[k] = exp(2 pi i k / n)
    for (std::size_t k = 0; k < n; ++k) {
        root[k] = std::polar(1.0L, 2 * std::numbers::pi_v<long double> *
                                       static_cast<long double>(k) / static_cast<long double>(n));
    }
    const auto transform = [&](int sign) {
        std::vector<Complex> sums(n);
        for (std::size_t k = 0; k < n; ++k) {
            for (std::size_t j = 0; j < n; ++j) {
                sums[k] += x[j] * root[(sign > 0 ? j * k : j * (n - k)) % n];
            }
        }
        x = sums;
    };
    for (std::size_t i = 0; i < lags.size(); ++i) x[i] = lags[i];
    for (std::size_t i = 2; i < lags.size(); ++i) x[n - i + 1] = lags[i];
    transform(-1);
    for (Complex& bin : x) bin = std::log(std::max(std::abs(bin), 0x1p-1022L));
    transform(1);
    for (std::size_t i = 0; i < n; ++i) {
        const long double fold = i == 0 ? 1 : i <= n / 2 ? 2 : 0;
        x[i] = fold * x[i].real() / static_cast<long double>(n);
    }
    transform(-1);
    for (Complex& bin : x) bin = std::polar(std::exp(-bin.real() / 2), -bin.imag());
    transform(1);
    std::vector<long double> filter;
    for (const Complex& value : x) filter.push_back(value.real() / static_cast<long double>(n));
    return filter;
}

}  // namespace halvern::testing_support
