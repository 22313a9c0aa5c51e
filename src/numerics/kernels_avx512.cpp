#include "numerics/kernel_table.h"

namespace halvern::numerics {

const Kernels& avx512_kernels() {
    // Only the transform gains: the loads of the sums would cross a cache line nearly every time,
    // and short vectors end sooner.
    static const Kernels kTable = [] {
        Kernels table = kernel_table<8>("AVX-512");
        const Kernels& narrower = avx2_kernels();
        table.convolve = narrower.convolve;
        table.correlate = narrower.correlate;
        table.levinson = narrower.levinson;
        return table;
    }();
    return kTable;
}

}  // namespace halvern::numerics
