#include "numerics/hilbert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>

namespace halvern::numerics {
namespace {

std::vector<double> quadrature(const std::vector<float>& trace) {
    auto hilbert = HilbertTransform::make(static_cast<std::int64_t>(trace.size()));
    EXPECT_TRUE(hilbert);
    std::vector<double> out(trace.size());
    hilbert->transform(trace, out);
    return out;
}

// By hand from the transform of four and of three values: [1, -1, -1, 1] and sqrt(3) / 3 of the
// differences of the neighbours.
TEST(Hilbert, GivesTheQuadratureOfShortTraces) {
    const auto expect_near = [](const std::vector<double>& actual,
                                const std::vector<double>& expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) EXPECT_NEAR(actual[i], expected[i], 1e-14);
    };
    expect_near(quadrature({1, 2, 3, 4}), {1, -1, -1, 1});
    const double third = std::sqrt(3.0) / 3;
    expect_near(quadrature({1, 2, 4}), {2 * third, -3 * third, third});
    expect_near(quadrature({5}), {0});
    expect_near(quadrature({5, 3}), {0, 0});
}

// The definition: a discrete Fourier transform without its negative frequencies.
TEST(Hilbert, AgreesWithItsDefinition) {
    for (const std::size_t n : {16u, 75u, 462u}) {
        std::vector<float> trace(n);
        for (std::size_t i = 0; i < n; ++i) {
            const auto x = static_cast<double>(i);
            trace[i] = static_cast<float>(std::sin(0.7 * x) + std::cos(0.01 * x * x) + 0.2);
        }
        const auto actual = quadrature(trace);
        const double turn = 2 * std::numbers::pi / static_cast<double>(n);
        std::vector<std::complex<double>> analytic(n);
        for (std::size_t k = 1; k < (n + 1) / 2; ++k) {
            std::complex<double> bin;
            for (std::size_t i = 0; i < n; ++i) {
                bin += std::polar<double>(trace[i], -turn * static_cast<double>(i * k % n));
            }
            for (std::size_t i = 0; i < n; ++i) {
                analytic[i] += 2.0 / static_cast<double>(n) * bin *
                               std::polar(1.0, turn * static_cast<double>(i * k % n));
            }
        }
        for (std::size_t i = 0; i < n; ++i) ASSERT_NEAR(actual[i], analytic[i].imag(), 1e-11) << i;
    }
}

}  // namespace
}  // namespace halvern::numerics
