#include "numerics/kernels.h"

#include <initializer_list>

namespace halvern::numerics {

const Kernels* kernels_of(KernelChoice choice) {
    switch (choice) {
        case KernelChoice::kBaseline:
            return &baseline_kernels();
#ifdef HALVERN_WIDE_KERNELS
        case KernelChoice::kAvx2:
            return __builtin_cpu_supports("avx2") ? &avx2_kernels() : nullptr;
        case KernelChoice::kAvx512:
            return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq")
                       ? &avx512_kernels()
                       : nullptr;
#endif
        default:
            return nullptr;
    }
}

const Kernels& kernels() {
    static const Kernels& chosen = [&]() -> const Kernels& {
        for (const KernelChoice choice : {KernelChoice::kAvx512, KernelChoice::kAvx2}) {
            if (const Kernels* wide = kernels_of(choice)) return *wide;
        }
        return baseline_kernels();
    }();
    return chosen;
}

}  // namespace halvern::numerics
