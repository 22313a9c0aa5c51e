#include "numerics/kernels_impl.h"

namespace halvern::numerics {

const Kernels& avx512_kernels() {
    // Only the transform gains: the loads of the sums would cross a cache line nearly every time,
    // and short vectors end sooner.
    static const Kernels kTable = [] {
        Kernels table = avx2_kernels();
        table.name = "AVX-512";
        table.lanes = 8;
        table.fft_forward = FftKernels<8>::forward;
        table.fft_inverse = FftKernels<8>::inverse;
        table.logarithms = FunctionKernels<8>::logarithms;
        table.exponentials = FunctionKernels<8>::exponentials;
        table.sines_and_cosines = FunctionKernels<8>::sines_and_cosines;
        return table;
    }();
    return kTable;
}

}  // namespace halvern::numerics
