#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

#include "foundation/messages.h"
#include "trace/codec_kernels.h"
#include "trace/codecs.h"

// Sample codecs on one trace of 1,500 samples that stays in cache. GB/s counts the bytes of the
// 4-byte samples on one side (6,000 a trace), and of_memcpy is that over memcpy of the same 6,000
// bytes, measured right before in the same run.

namespace halvern {

void TerminateJob(int) { std::abort(); }

namespace {

constexpr std::size_t kSamples = 1500;
constexpr std::size_t kTraceBytes = kSamples * 4;

struct TraceData {
    std::vector<float> samples = std::vector<float>(kSamples);
    std::vector<std::byte> raw = std::vector<std::byte>(kTraceBytes);

    TraceData() {
        std::uint32_t state = 1;
        for (float& sample : samples) {
            state = state * 1664525 + 1013904223;
            sample = static_cast<float>(static_cast<std::int32_t>(state)) * 1e-6f;
        }
        encode_ibm(samples, raw);
    }
};

/// Bytes a second of `work`, which moves one trace: the best of several short runs.
template <class Work>
double bytes_per_second(Work&& work) {
    constexpr int kTraces = 2000;
    double best = 0;
    for (int run = 0; run < 20; ++run) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < kTraces; ++i) {
            work();
            benchmark::ClobberMemory();
        }
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
        best = std::max(best, kTraces * double{kTraceBytes} / time.count());
    }
    return best;
}

/// Times `work` under the library, and notes its own best rate beside memcpy's.
template <class Work>
void measure(benchmark::State& state, TraceData& trace, Work&& work) {
    std::vector<std::byte> copy(kTraceBytes);
    const double limit = bytes_per_second([&] {
        benchmark::DoNotOptimize(copy.data());
        std::memcpy(copy.data(), trace.raw.data(), kTraceBytes);
    });
    const double rate = bytes_per_second(work);
    for (auto _ : state) {
        work();
        benchmark::ClobberMemory();
    }
    state.counters["GB/s"] = rate / 1e9;
    state.counters["memcpy_GB/s"] = limit / 1e9;
    state.counters["of_memcpy"] = rate / limit;
}

void ByteSwap(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] { decode_ieee(trace.raw, trace.samples); });
}
void IbmDecode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] { decode_ibm(trace.raw, trace.samples); });
}
void IbmEncode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] { encode_ibm(trace.samples, trace.raw); });
}
void Int16Decode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] { decode_int16(trace.raw, 0.25, trace.samples); });
}
void Int16Encode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace,
            [&] { benchmark::DoNotOptimize(encode_int16(trace.samples, trace.raw)); });
}
void PlainByteSwap(benchmark::State& state) {
    TraceData trace;
    auto* words = std::as_writable_bytes(std::span(trace.samples)).data();
    measure(state, trace,
            [&] { plain_codec_kernels().swap_words(trace.raw.data(), words, kSamples); });
}
void PlainIbmDecode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] {
        plain_codec_kernels().decode_ibm(trace.raw.data(), trace.samples.data(), kSamples);
    });
}
void PlainIbmEncode(benchmark::State& state) {
    TraceData trace;
    measure(state, trace, [&] {
        plain_codec_kernels().encode_ibm(trace.samples.data(), trace.raw.data(), kSamples);
    });
}

BENCHMARK(ByteSwap);
BENCHMARK(IbmDecode);
BENCHMARK(IbmEncode);
BENCHMARK(Int16Decode);
BENCHMARK(Int16Encode);
BENCHMARK(PlainByteSwap);
BENCHMARK(PlainIbmDecode);
BENCHMARK(PlainIbmEncode);

}  // namespace

}  // namespace halvern

BENCHMARK_MAIN();
