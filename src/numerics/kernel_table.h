#pragma once

#include "numerics/fft_kernels.h"
#include "numerics/function_kernels.h"
#include "numerics/moveout_kernels.h"
#include "numerics/sum_kernels.h"

namespace halvern::numerics {

/// All kernels of one width.
template <int L>
constexpr Kernels kernel_table(const char* name) {
    return {.name = name,
            .lanes = L,
            .fft_forward = FftKernels<L>::forward,
            .fft_inverse = FftKernels<L>::inverse,
            .convolve = SumKernels<L>::convolve,
            .correlate = SumKernels<L>::correlate,
            .levinson = SolverKernels<L>::levinson,
            .logarithms = FunctionKernels<L>::logarithms,
            .exponentials = FunctionKernels<L>::exponentials,
            .sines_and_cosines = FunctionKernels<L>::sines_and_cosines,
            .log_amplitudes = FunctionKernels<L>::log_amplitudes,
            .inverse_spectrum = FunctionKernels<L>::inverse_spectrum,
            .fold_symmetric = FunctionKernels<L>::fold_symmetric,
            .unfold_symmetric = FunctionKernels<L>::unfold_symmetric,
            .moveout = MoveoutKernels<L>::moveout};
}

}  // namespace halvern::numerics
