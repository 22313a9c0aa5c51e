#include "numerics/toeplitz.h"

#include "numerics/kernels.h"

namespace halvern::numerics {

static_assert(toeplitz_work(1) == 4 * (1 + kSolverPadding));

bool solve_toeplitz(std::span<const double> row, std::span<const double> right,
                    std::span<double> solution, std::span<double> work) {
    const std::size_t length = solution.size();
    if (length == 0 || row.size() != length || right.size() != length ||
        work.size() < toeplitz_work(length)) {
        return false;
    }
    return kernels().levinson(row.data(), right.data(), solution.data(), length, work.data());
}

}  // namespace halvern::numerics
