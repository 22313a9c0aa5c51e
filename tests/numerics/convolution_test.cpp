#include "numerics/convolution.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <vector>

#include "numerics/correlation.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

using Values = std::vector<double>;

// By hand: (1 + 2z + 3z^2)(1 + z).
TEST(Convolution, MultipliesAndDividesPolynomials) {
    const Values a{1, 2, 3}, b{1, 1}, product{1, 3, 5, 3};
    Values out(4);
    EXPECT_EQ(convolution(a, b, out, 1), nullptr);
    EXPECT_EQ(out, product);
    Values quotient(3);
    EXPECT_EQ(convolution(product, b, quotient, -1), nullptr);
    EXPECT_EQ(quotient, a);
    // 1 / (2 + z) = 1/2 - z/4 + z^2/8 - ...: the division of a finite sequence need not end.
    Values series(4);
    EXPECT_EQ(convolution(Values{1, 0, 0}, Values{2, 1}, series, -1), nullptr);
    EXPECT_EQ(series, (Values{.5, -.25, .125, -.0625}));
}

TEST(Convolution, SaysWhyItRefuses) {
    const Values a{1, 2}, delayed{0, 1};
    Values out{7, 7, 7};
    for (const int sign : {0, 2, -2}) {
        EXPECT_STREQ(convolution(a, a, out, sign),
                     "isign must be 1 or -1 for convolution or deconvolution\n");
    }
    EXPECT_NE(convolution({}, a, out, 1), nullptr);
    EXPECT_NE(convolution(a, {}, out, -1), nullptr);
    EXPECT_NE(convolution(a, delayed, out, -1), nullptr);
    Values long_out(4);
    EXPECT_NE(convolution(a, a, long_out, 1), nullptr);
    EXPECT_EQ(out, (Values{7, 7, 7}));
}

TEST(Convolution, FillsUpWithZeros) {
    Values out{7, 7, 7, 7};
    convolve(Values{2}, Values{3, 4}, out);
    EXPECT_EQ(out, (Values{6, 8, 0, 0}));
    convolve({}, Values{3, 4}, out);
    EXPECT_EQ(out, (Values{0, 0, 0, 0}));
}

constexpr std::size_t kLengths[] = {1, 2, 3, 7, 8, 31, 64, 65, 200, 1501};

// Whole numbers make every order of summation exact, so the definition decides to the last bit.
TEST(Convolution, IsTheDefinitionForEveryShapeAndWidth) {
    for (const std::size_t a_length : kLengths) {
        for (const std::size_t b_length : kLengths) {
            if (b_length > a_length) continue;  // convolve puts the longer one first
            const Values a = whole_noise(a_length), b = whole_noise(b_length, 2);
            Values expected(a_length + b_length - 1);
            for (std::size_t i = 0; i < a_length; ++i) {
                for (std::size_t j = 0; j < b_length; ++j) expected[i + j] += a[i] * b[j];
            }
            for (const Kernels* width : every_width()) {
                for (const std::size_t outputs : {expected.size(), a_length, std::size_t{1}}) {
                    Values out(outputs, -99);
                    width->convolve(a.data(), a_length, b.data(), b_length, out.data(), outputs);
                    ASSERT_EQ(out, Values(expected.begin(), expected.begin() + outputs))
                        << width->name << ' ' << a_length << " by " << b_length;
                }
            }
        }
    }
}

TEST(Correlation, IsTheDefinitionForEveryShapeAndWidth) {
    for (const std::size_t a_length : kLengths) {
        for (const std::size_t b_length : kLengths) {
            const Values a = whole_noise(a_length), b = whole_noise(b_length, 2);
            for (const std::size_t lags : {std::size_t{1}, std::size_t{49}, b_length + 20}) {
                Values expected(lags);
                for (std::size_t k = 0; k < lags; ++k) {
                    for (std::size_t i = 0; i < a_length && i + k < b_length; ++i) {
                        expected[k] += a[i] * b[i + k];
                    }
                }
                for (const Kernels* width : every_width()) {
                    Values out(lags, -99);
                    width->correlate(a.data(), a_length, b.data(), b_length, out.data(), lags);
                    ASSERT_EQ(out, expected) << width->name << ' ' << a_length << " with "
                                             << b_length << ", " << lags << " lags";
                }
            }
        }
    }
}

TEST(Correlation, OfNothingIsZero) {
    Values out{7, 7};
    correlate({}, Values{1}, out);
    EXPECT_EQ(out, (Values{0, 0}));
}

// Both ways of the correlator against the sums in extended precision.
TEST(Correlator, SpectralAgreesWithDirectToRounding) {
    using enum Correlator::Method;
    const Values a = noise(1500), b = noise(1300, 2);
    for (const std::size_t lags : {1u, 49u, 1500u}) {
        for (const auto method : {kDirect, kSpectral}) {
            std::optional<Correlator> correlator =
                Correlator::make(1500, static_cast<std::int64_t>(lags), method);
            ASSERT_TRUE(correlator);
            EXPECT_EQ(correlator->spectral(), method == kSpectral);
            for (const Values& second : {a, b}) {
                Values out(lags);
                ASSERT_TRUE(&second == &a ? correlator->autocorrelate(a, out)
                                          : correlator->correlate(a, second, out));
                for (std::size_t k = 0; k < lags; ++k) {
                    long double sum = 0;
                    for (std::size_t i = 0; i < a.size() && i + k < second.size(); ++i) {
                        sum += static_cast<long double>(a[i]) * second[i + k];
                    }
                    // The energies are about 500.
                    ASSERT_NEAR(out[k], static_cast<double>(sum), 500 * 2e-15) << "lag " << k;
                }
            }
        }
    }
}

TEST(Correlator, TakesTheSpectrumForManyLagsOnly) {
    EXPECT_FALSE(Correlator::make(1500, 49)->spectral());
    EXPECT_TRUE(Correlator::make(1500, 1500)->spectral());
    EXPECT_FALSE(Correlator::make(0, 1));
    EXPECT_FALSE(Correlator::make(1, 0));
    EXPECT_FALSE(Correlator::make(std::int64_t{1} << 40, 1));
    Correlator correlator = *Correlator::make(4, 2);
    Values out(2), many(3);
    EXPECT_FALSE(correlator.autocorrelate(noise(5), out));
    EXPECT_FALSE(correlator.autocorrelate(noise(4), many));
}

}  // namespace
}  // namespace halvern::numerics
