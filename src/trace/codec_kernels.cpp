#include "trace/codec_kernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "trace/codec_words.h"

#if defined(__x86_64__) || defined(__i386__)
#define HALVERN_X86 1
#endif

// Every loop below is written once, and compiled once for each set of kernels by being forced into
// a function with that set's instructions; a call would keep the plain instructions.
#define HALVERN_KERNEL [[gnu::always_inline]] inline

namespace halvern {

namespace {

HALVERN_KERNEL std::uint32_t load_word(const std::byte* raw) {
    std::uint32_t word;
    std::memcpy(&word, raw, sizeof word);
    return big_endian_word(word);
}
HALVERN_KERNEL void store_word(std::byte* raw, std::uint32_t word) {
    word = big_endian_word(word);
    std::memcpy(raw, &word, sizeof word);
}

HALVERN_KERNEL void swap_words_loop(const std::byte* __restrict raw, std::byte* __restrict words,
                                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t word = load_word(raw + 4 * i);
        std::memcpy(words + 4 * i, &word, sizeof word);
    }
}

HALVERN_KERNEL void decode_ibm_loop(const std::byte* __restrict raw, float* __restrict samples,
                                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = std::bit_cast<float>(ieee_from_ibm(load_word(raw + 4 * i)));
    }
}

HALVERN_KERNEL void encode_ibm_loop(const float* __restrict samples, std::byte* __restrict raw,
                                    std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        store_word(raw + 4 * i, ibm_from_ieee(std::bit_cast<std::uint32_t>(samples[i])));
    }
}

HALVERN_KERNEL void decode_int16_loop(const std::byte* __restrict raw, float scale,
                                      float* __restrict samples, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t half;
        std::memcpy(&half, raw + 2 * i, sizeof half);
        samples[i] = static_cast<float>(static_cast<std::int16_t>(big_endian_half(half))) * scale;
    }
}

HALVERN_KERNEL Magnitude magnitude_loop(const float* samples, std::size_t count) {
    // Finite magnitudes are ordered like their bits. Counted in blocks, for narrow counters.
    constexpr std::size_t kBlock = 1u << 30;
    constexpr std::int32_t kInfinity = 0x7F800000;
    Magnitude found;
    std::int32_t largest = 0;
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
        const std::size_t end = std::min(count, begin + kBlock);
        std::int32_t not_finite = 0;
        for (std::size_t i = begin; i < end; ++i) {
            const auto bits = std::bit_cast<std::int32_t>(samples[i]) & 0x7FFFFFFF;
            const bool finite = bits < kInfinity;
            not_finite += finite ? 0 : 1;
            largest = std::max(largest, finite ? bits : 0);
        }
        found.not_finite += not_finite;
    }
    found.largest = std::bit_cast<float>(largest);
    return found;
}

HALVERN_KERNEL void encode_int16_loop(const float* __restrict samples, float first, float second,
                                      std::byte* __restrict raw, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float scaled = samples[i] * first * second;
        // NaN fails every comparison; both bounds are exact as floats.
        const float above = scaled >= -32768.0f ? scaled : scaled < 0 ? -32768.0f : 0.0f;
        const float held = above <= 32767.0f ? above : 32767.0f;
        const auto half = big_endian_half(static_cast<std::uint16_t>(static_cast<int>(held)));
        std::memcpy(raw + 2 * i, &half, sizeof half);
    }
}

}  // namespace

// One set: the loops above compiled with the instructions that TARGET allows.
#define HALVERN_KERNEL_SET(NAMESPACE, TARGET)                                                 \
    namespace NAMESPACE {                                                                     \
    TARGET void swap_words(const std::byte* raw, std::byte* words, std::size_t count) {       \
        swap_words_loop(raw, words, count);                                                   \
    }                                                                                         \
    TARGET void decode_ibm(const std::byte* raw, float* samples, std::size_t count) {         \
        decode_ibm_loop(raw, samples, count);                                                 \
    }                                                                                         \
    TARGET void encode_ibm(const float* samples, std::byte* raw, std::size_t count) {         \
        encode_ibm_loop(samples, raw, count);                                                 \
    }                                                                                         \
    TARGET void decode_int16(const std::byte* raw, float scale, float* samples,               \
                             std::size_t count) {                                             \
        decode_int16_loop(raw, scale, samples, count);                                        \
    }                                                                                         \
    TARGET Magnitude magnitude(const float* samples, std::size_t count) {                     \
        return magnitude_loop(samples, count);                                                \
    }                                                                                         \
    TARGET void encode_int16(const float* samples, float first, float second, std::byte* raw, \
                             std::size_t count) {                                             \
        encode_int16_loop(samples, first, second, raw, count);                                \
    }                                                                                         \
    constexpr CodecKernels kSet{#NAMESPACE,   swap_words, decode_ibm,  encode_ibm,            \
                                decode_int16, magnitude,  encode_int16};                      \
    }

namespace {
HALVERN_KERNEL_SET(plain, )
#if HALVERN_X86
HALVERN_KERNEL_SET(avx2, [[gnu::target("avx2")]])
#endif
}  // namespace

const CodecKernels& plain_codec_kernels() { return plain::kSet; }

const CodecKernels* avx2_codec_kernels() {
#if HALVERN_X86
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx2")) return &avx2::kSet;
#endif
    return nullptr;
}

const CodecKernels& codec_kernels() {
    static const CodecKernels* const best = avx2_codec_kernels();
    return best ? *best : plain_codec_kernels();
}

}  // namespace halvern
