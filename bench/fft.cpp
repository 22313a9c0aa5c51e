// The real transform against FFTW's, forward and inverse, for every register width.

#include <string>

#include "fftw.h"
#include "numerics/real_fft.h"
#include "ratio.h"

namespace {

using namespace halvern;
using namespace halvern::numerics;

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
