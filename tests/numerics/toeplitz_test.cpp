#include "numerics/toeplitz.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "numerics/correlation.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

using Values = std::vector<double>;

bool solve(const Values& row, const Values& right, Values& solution) {
    Values work(toeplitz_work(row.size()));
    solution.assign(row.size(), 0);
    return solve_toeplitz(row, right, solution, work);
}

// Gaussian elimination with pivots, in extended precision.
Values eliminated(const Values& row, const Values& right) {
    const std::size_t n = row.size();
    std::vector<std::vector<long double>> m(n, std::vector<long double>(n + 1));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) m[i][j] = row[i > j ? i - j : j - i];
        m[i][n] = right[i];
    }
    for (std::size_t p = 0; p < n; ++p) {
        std::size_t best = p;
        for (std::size_t i = p; i < n; ++i) {
            if (std::abs(m[i][p]) > std::abs(m[best][p])) best = i;
        }
        std::swap(m[p], m[best]);
        for (std::size_t i = 0; i < n; ++i) {
            const long double factor = i == p ? 0 : m[i][p] / m[p][p];
            for (std::size_t j = p; j <= n; ++j) m[i][j] -= factor * m[p][j];
        }
    }
    Values solution(n);
    for (std::size_t i = 0; i < n; ++i) solution[i] = static_cast<double>(m[i][n] / m[i][i]);
    return solution;
}

TEST(Toeplitz, SolvesByHand) {
    Values f;
    ASSERT_TRUE(solve({4}, {2}, f));
    EXPECT_EQ(f, (Values{.5}));
    ASSERT_TRUE(solve({2, 1}, {3, 3}, f));
    EXPECT_EQ(f, (Values{1, 1}));
    // A process x[i] = x[i-1] / 2 + noise has the autocorrelation 2^-k and is predicted by (1/2).
    ASSERT_TRUE(solve({1, .5, .25, .125}, {.5, .25, .125, .0625}, f));
    EXPECT_EQ(f, (Values{.5, 0, 0, 0}));
}

TEST(Toeplitz, AgreesWithElimination) {
    for (const std::size_t length : {2u, 3u, 9u, 48u, 101u}) {
        const Values trace = noise(1500, length);
        Values lags(length + 1);
        correlate(trace, trace, lags);
        lags[0] *= 1.001;
        const Values row(lags.begin(), lags.end() - 1), right(lags.begin() + 1, lags.end());
        const Values expected = eliminated(row, right);
        Values first;
        for (const Kernels* width : every_width()) {
            Values f(length), work(toeplitz_work(length));
            ASSERT_TRUE(width->levinson(row.data(), right.data(), f.data(), length, work.data()));
            for (std::size_t i = 0; i < length; ++i) EXPECT_NEAR(f[i], expected[i], 1e-13);
            if (first.empty()) first = f;
            EXPECT_EQ(f, first) << "the widths round differently";
        }
    }
}

TEST(Toeplitz, SaysWhenItBreaksDown) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    Values cosine(
        12);  // a pure sine's autocorrelation: two terms predict it, the third is at a loss
    for (std::size_t k = 0; k < 12; ++k) cosine[k] = std::cos(.3 * static_cast<double>(k));
    Values f;
    for (const Values& row :
         {Values{0}, Values{0, 0}, Values{1, 1}, Values{1, -1}, Values{1, 2}, Values{-1, .5},
          Values{kNaN, 0}, Values{1, kNaN}, Values{1, .5, 1}, cosine}) {
        EXPECT_FALSE(solve(row, Values(row.size(), 1), f)) << testing::PrintToString(row);
    }
    EXPECT_FALSE(solve({}, {}, f));
    EXPECT_FALSE(solve({2, 1}, {1}, f));
    Values work(5), two(2);
    EXPECT_FALSE(solve_toeplitz(two, two, two, work));
}

}  // namespace
}  // namespace halvern::numerics
