// The services behind the processing items, for traces of 1,500 samples, against what bounds them.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "numerics/convolution.h"
#include "numerics/correlation.h"
#include "numerics/kernels.h"
#include "numerics/key_sort.h"
#include "numerics/minimum_phase.h"
#include "numerics/real_fft.h"
#include "numerics/running_gain.h"
#include "numerics/spline.h"
#include "numerics/toeplitz.h"
#include "ratio.h"

namespace {

using namespace halvern;
using namespace halvern::numerics;

constexpr std::size_t kSamples = 1500;
constexpr std::size_t kOperator = 48;  // 94 ms at 2 ms

AlignedDoubles noise(std::size_t count) {
    AlignedDoubles values(count);
    std::uint64_t state = 1;
    for (double& value : values) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        value = static_cast<double>(static_cast<std::int64_t>(state) >> 11) * 0x1p-52;
    }
    return values;
}

/// The measure of the per-trace services: our own transform pair of 2,048 values.
struct Pair {
    RealFft fft = *RealFft::make(2048);
    AlignedDoubles x = AlignedDoubles(2048);
    void operator()() {
        fft.transform(x, 1);
        fft.transform(x, -1);
    }
};

void correlation_direct(benchmark::State& state) {
    const AlignedDoubles trace = noise(kSamples);
    AlignedDoubles lags(kOperator + 1);
    compare(
        state, [&] { correlate(trace, trace, lags); }, Pair{});
}
BENCHMARK(correlation_direct);

void convolution_with_operator(benchmark::State& state) {
    const AlignedDoubles trace = noise(kSamples), filter = noise(kOperator);
    AlignedDoubles out(kSamples);
    compare(
        state, [&] { convolve(trace, filter, out); }, Pair{});
}
BENCHMARK(convolution_with_operator);

void toeplitz(benchmark::State& state) {
    const AlignedDoubles trace = noise(kSamples);
    AlignedDoubles lags(kOperator + 1), filter(kOperator), work(toeplitz_work(kOperator));
    correlate(trace, trace, lags);
    const std::span<const double> p = lags;
    compare(
        state,
        [&] {
            benchmark::DoNotOptimize(
                solve_toeplitz(p.first(kOperator), p.subspan(1), filter, work));
        },
        Pair{});
}
BENCHMARK(toeplitz);

void minimum_phase_design(benchmark::State& state) {
    const AlignedDoubles trace = noise(kSamples);
    AlignedDoubles lags(kOperator + 1), filter(kOperator);
    correlate(trace, trace, lags);
    MinimumPhaseInverse plan = *MinimumPhaseInverse::make(4096);
    compare(
        state, [&] { plan.design(lags, filter); }, Pair{});
}
BENCHMARK(minimum_phase_design);

/// Of 2,048 values: logarithms, exponentials, sines and cosines.
void elementary_functions(benchmark::State& state) {
    const AlignedDoubles x = noise(2048);
    AlignedDoubles a(2048), b(2048);
    compare(
        state,
        [&] {
            kernels().exponentials(x.data(), a.data(), x.size());
            kernels().logarithms(a.data(), a.data(), x.size());
            kernels().sines_and_cosines(x.data(), a.data(), b.data(), x.size());
        },
        [&] {
            for (std::size_t i = 0; i < x.size(); ++i) a[i] = std::exp(x[i]);
            for (double& value : a) value = std::log(value);
            for (std::size_t i = 0; i < x.size(); ++i) {
                a[i] = std::sin(x[i]);
                b[i] = std::cos(x[i]);
            }
            benchmark::ClobberMemory();
        });
    state.SetLabel("limit: the standard library");
}
BENCHMARK(elementary_functions);

void spline_shift(benchmark::State& state) {
    std::vector<float> trace(kSamples, 1.0f);
    AlignedDoubles work(kSamples);
    compare(
        state, [&] { benchmark::DoNotOptimize(shift_by_spline(trace, .5, work)); }, Pair{});
}
BENCHMARK(spline_shift);

void gain(benchmark::State& state) {
    const AlignedDoubles values = noise(kSamples);
    const std::vector<float> input(values.begin(), values.end());
    std::vector<float> trace = input;
    AlignedDoubles energies(kSamples);
    const auto fresh = [&] { std::memcpy(trace.data(), input.data(), kSamples * sizeof(float)); };
    compare(
        state,
        [&] {
            fresh();
            benchmark::DoNotOptimize(running_gain(trace, 64, energies));
        },
        Pair{});
    state.SetLabel("limit: a transform pair");
}
BENCHMARK(gain);

void direct_over_spectral_correlation(benchmark::State& state) {
    const AlignedDoubles trace = noise(static_cast<std::size_t>(state.range(0)));
    AlignedDoubles out(static_cast<std::size_t>(state.range(1)));
    using enum Correlator::Method;
    Correlator direct = *Correlator::make(state.range(0), state.range(1), kDirect);
    Correlator spectral = *Correlator::make(state.range(0), state.range(1), kSpectral);
    compare(
        state, [&] { direct.autocorrelate(trace, out); },
        [&] { spectral.autocorrelate(trace, out); });
    state.SetLabel(Correlator::make(state.range(0), state.range(1))->spectral() ? "takes spectral"
                                                                                : "takes direct");
}
BENCHMARK(direct_over_spectral_correlation)
    ->ArgsProduct({{500, 1500, 6000}, {25, 50, 100, 200, 400}});

/// Records of two keys, like ensemble and offset, against std::sort of as many doubles.
void sort_keys(benchmark::State& state) {
    const auto count = static_cast<std::size_t>(state.range(0));
    const AlignedDoubles random = noise(count);
    std::vector<KeyRecord> records(count);
    std::vector<double> doubles(count);
    compare(
        state,
        [&] {
            for (std::size_t i = 0; i < count; ++i) {
                const double key = static_cast<double>(static_cast<int>(random[i] * 5e4));
                records[i] = {
                    {key, random[count - 1 - i] * 3000, 0, 0}, static_cast<std::int64_t>(i), 0};
            }
            sort_records(records);
        },
        [&] {
            std::ranges::copy(random, doubles.begin());
            std::ranges::sort(doubles);
        },
        1);
}
BENCHMARK(sort_keys)->Arg(40'000)->Arg(10'000'000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
