#include "numerics/real_fft.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <numbers>
#include <span>
#include <vector>

#include "widths.h"

namespace halvern::numerics {
namespace {

// The definition, summed in extended precision.
std::vector<double> defined_spectrum(std::span<const double> x) {
    const std::size_t n = x.size();
    std::vector<std::complex<long double>> root(n);
    for (std::size_t k = 0; k < n; ++k) {
        const long double angle = -2 * std::numbers::pi_v<long double> *
                                  static_cast<long double>(k) / static_cast<long double>(n);
        root[k] = {std::cos(angle), std::sin(angle)};
    }
    std::vector<double> packed(n);
    for (std::size_t k = 0; k <= n / 2; ++k) {
        long double re = 0, im = 0;
        for (std::size_t j = 0; j < n; ++j) {
            re += x[j] * root[j * k % n].real();
            im += x[j] * root[j * k % n].imag();
        }
        if (k == 0 || k == n / 2) {
            packed[k == 0 ? 0 : 1] = static_cast<double>(re);
        } else {
            packed[2 * k] = static_cast<double>(re);
            packed[2 * k + 1] = static_cast<double>(im);
        }
    }
    return packed;
}

double norm(std::span<const double> x) {
    double sum = 0;
    for (const double value : x) sum += value * value;
    return std::sqrt(sum);
}

double distance(std::span<const double> x, std::span<const double> y) {
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += (x[i] - y[i]) * (x[i] - y[i]);
    return std::sqrt(sum);
}

// By hand: 1 - 3 and 4 - 2 at a quarter of the sampling frequency, turned by exp(-i pi j / 2).
TEST(RealFft, PacksFourValuesByHand) {
    std::vector<double> x{1, 2, 3, 4};
    ASSERT_TRUE(RealFft::make(4)->transform(x, 1));
    EXPECT_EQ(x, (std::vector<double>{10, -2, -2, 2}));
    ASSERT_TRUE(RealFft::make(4)->transform(x, -1));
    EXPECT_EQ(x, (std::vector<double>{2, 4, 6, 8}));  // times N / 2
}

TEST(RealFft, IsTheDefinitionAtEveryLengthAndWidth) {
    for (std::int64_t n = 2; n <= 8192; n *= 2) {
        SCOPED_TRACE(testing::Message() << n << " values");
        const std::vector<double> x = noise(static_cast<std::size_t>(n));
        const std::vector<double> expected = defined_spectrum(x);
        // Rounding errors of independent sign: some units of 1e-16 for each level.
        const double tolerance = 1e-16 * std::log2(static_cast<double>(n));
        std::optional<RealFft> fft = RealFft::make(n);
        ASSERT_TRUE(fft);

        const auto check = [&](const std::vector<double>& spectrum,
                               const std::vector<double>& back) {
            EXPECT_LE(distance(spectrum, expected), tolerance * norm(expected));
            std::vector<double> scaled = x;
            for (double& value : scaled) value *= static_cast<double>(n) / 2;
            EXPECT_LE(distance(back, scaled), 2 * tolerance * norm(scaled));
        };
        std::vector<double> spectrum = x;
        ASSERT_TRUE(fft->transform_plain(spectrum, 1));
        std::vector<double> back = spectrum;
        ASSERT_TRUE(fft->transform_plain(back, -1));
        check(spectrum, back);

        std::vector<std::vector<double>> results;
        for (const Kernels* width : every_width()) {
            SCOPED_TRACE(width->name);
            fft->use(*width);
            spectrum = x;
            ASSERT_TRUE(fft->transform(spectrum, 1));
            back = spectrum;
            ASSERT_TRUE(fft->transform(back, -1));
            check(spectrum, back);
            for (const std::size_t count : {std::size_t{1}, std::size_t{48}, x.size()}) {
                if (count > x.size()) continue;
                std::vector<double> start = spectrum;
                ASSERT_TRUE(fft->inverse_start(start, count));
                EXPECT_TRUE(std::equal(start.begin(), start.begin() + count, back.begin()));
            }
            results.push_back(spectrum);
            results.push_back(back);
        }
        for (std::size_t i = 2; i < results.size(); ++i) {
            EXPECT_EQ(results[i], results[i - 2]) << "the widths round differently";
        }
    }
}

TEST(RealFft, RefusesOtherLengthsAndSigns) {
    for (const std::int64_t length :
         {std::int64_t{-4}, std::int64_t{0}, std::int64_t{1}, std::int64_t{3}, std::int64_t{1000},
          2 * RealFft::kMaxLength}) {
        EXPECT_FALSE(RealFft::make(length)) << length;
    }
    for (const std::int64_t length : {2, 512}) {
        RealFft fft = *RealFft::make(length);
        std::vector<double> x(static_cast<std::size_t>(length), 1.0);
        const std::vector<double> before = x;
        EXPECT_FALSE(fft.transform(x, 0));
        EXPECT_FALSE(fft.transform(x, 2));
        EXPECT_FALSE(fft.transform(std::span(x).first(x.size() / 2), 1));
        EXPECT_FALSE(fft.transform({}, 1));
        EXPECT_FALSE(fft.inverse_start({}, 1));
        EXPECT_EQ(x, before);
    }
    EXPECT_EQ(RealFft::length_for(0), 2);
    EXPECT_EQ(RealFft::length_for(1024), 1024);
    EXPECT_EQ(RealFft::length_for(1025), 2048);
    EXPECT_EQ(RealFft::length_for(RealFft::kMaxLength + 1), 0);
}

}  // namespace
}  // namespace halvern::numerics
