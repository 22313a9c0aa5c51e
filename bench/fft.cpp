// The real transform against FFTW's, forward and inverse, for every register width.

#include <fftw3.h>

#include <string>

#include "numerics/real_fft.h"
#include "ratio.h"

namespace {

using namespace halvern;
using namespace halvern::numerics;

/// FFTW's real transforms of n values, out of place, each on its own plan.
class Fftw {
public:
    explicit Fftw(int n) : real_(fftw_alloc_real(n)), complex_(fftw_alloc_complex(n / 2 + 1)) {
        forward_ = fftw_plan_dft_r2c_1d(n, real_, complex_, FFTW_MEASURE);
        inverse_ = fftw_plan_dft_c2r_1d(n, complex_, real_, FFTW_MEASURE);
        std::fill(real_, real_ + n, 0.0);
    }
    Fftw(const Fftw&) = delete;
    Fftw& operator=(const Fftw&) = delete;
    ~Fftw() {
        fftw_destroy_plan(forward_);
        fftw_destroy_plan(inverse_);
        fftw_free(real_);
        fftw_free(complex_);
    }

    void forward() { fftw_execute(forward_); }
    void inverse() { fftw_execute(inverse_); }

private:
    double* real_;
    fftw_complex* complex_;
    fftw_plan forward_;
    fftw_plan inverse_;
};

enum Direction { kForward, kInverse, kPair };

void transform(benchmark::State& state, const Kernels* kernels, Direction direction) {
    const auto n = static_cast<std::size_t>(state.range(0));
    Fftw fftw(static_cast<int>(n));
    RealFft fft = *RealFft::make(state.range(0));
    if (kernels) fft.use(*kernels);
    AlignedDoubles x(n);  // zeros stay zeros, whatever the number of unscaled transforms
    compare(
        state,
        [&] {
            if (direction != kInverse) kernels ? fft.transform(x, 1) : fft.transform_plain(x, 1);
            if (direction != kForward) kernels ? fft.transform(x, -1) : fft.transform_plain(x, -1);
        },
        [&] {
            if (direction != kInverse) fftw.forward();
            if (direction != kForward) fftw.inverse();
        });
}

}  // namespace

int main(int argc, char** argv) {
    const auto add = [](const std::string& name, const Kernels* kernels, Direction direction) {
        benchmark::RegisterBenchmark(name.c_str(), transform, kernels, direction)
            ->RangeMultiplier(2)
            ->Range(1024, 8192);
    };
    for (const auto choice :
         {KernelChoice::kAvx512, KernelChoice::kAvx2, KernelChoice::kBaseline}) {
        const Kernels* kernels = kernels_of(choice);
        if (!kernels) continue;
        add(std::string("pair/") + kernels->name, kernels, kPair);
    }
    add("pair/plain", nullptr, kPair);
    add("forward", &kernels(), kForward);
    add("inverse", &kernels(), kInverse);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
