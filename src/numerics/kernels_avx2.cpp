#include "numerics/kernel_table.h"

namespace halvern::numerics {

const Kernels& avx2_kernels() {
    static constexpr Kernels kTable = kernel_table<4>("AVX2");
    return kTable;
}

}  // namespace halvern::numerics
