#include "numerics/kernel_table.h"

namespace halvern::numerics {

const Kernels& baseline_kernels() {
    static constexpr Kernels kTable = kernel_table<2>("16-byte");
    return kTable;
}

}  // namespace halvern::numerics
