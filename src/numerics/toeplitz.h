#pragma once

#include <cstddef>
#include <span>

namespace halvern::numerics {

/// Doubles of work space that solve_toeplitz needs for a system of this size.
constexpr std::size_t toeplitz_work(std::size_t size) { return 4 * (size + 8); }

/// Solves the symmetric Toeplitz system of L equations
///     sum over j of row[|i - j|] solution[j] = right[i],   i = 0 ... L - 1,
/// by Levinson's recursion in L^2 steps of two multiplications each. With the autocorrelation p as
/// row and p[lag ...] as right-hand side the solution is the Wiener prediction filter.
/// Literature: Levinson, J. Math. Phys. 25 (1947); Robinson and Treitel, Geophysical Signal
/// Analysis (1980), chapter 6; Golub and Van Loan, Matrix Computations, section 4.7.
///
/// False when the recursion breaks down: when the error power, which starts at row[0] and shrinks
/// with every step of a positive definite system, is not above L x 2.2e-16 x row[0] (the system is
/// singular to working precision, or not positive definite, or holds something that is not a
/// number), and when the sizes do not fit or L is 0. `solution` then holds anything. All four spans
/// are distinct; `work` holds at least toeplitz_work(L) doubles. Nothing is allocated.
[[nodiscard]] bool solve_toeplitz(std::span<const double> row, std::span<const double> right,
                                  std::span<double> solution, std::span<double> work);

}  // namespace halvern::numerics
