#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "foundation/messages.h"
#include "ratio.h"
#include "trace/codec_kernels.h"
#include "trace/codecs.h"

// Sample codecs on one trace of 1,500 samples that stays in cache. GB/s counts the bytes of the
// 4-byte samples on one side (6,000 a trace); the ratio is to memcpy of as many bytes.

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

/// Times `work`, which moves one trace, beside memcpy of its bytes.
template <class Work>
void measure(benchmark::State& state, TraceData& trace, Work&& work) {
    std::vector<std::byte> copy(kTraceBytes);
    const auto moved = [](auto&& move) {
        move();
        benchmark::ClobberMemory();
    };
    constexpr int kCalls = 2000;
    compare(
        state, [&] { moved(work); },
        [&] { moved([&] { std::memcpy(copy.data(), trace.raw.data(), kTraceBytes); }); }, kCalls);
    state.counters["GB/s"] = kTraceBytes / state.counters["us"] / 1e3;
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
