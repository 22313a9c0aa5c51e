#include "numerics/kernels_impl.h"

namespace halvern::numerics {

const Kernels& avx512_kernels() {
    static constexpr Kernels kTable = kernel_table<8>("AVX-512");
    return kTable;
}

}  // namespace halvern::numerics
