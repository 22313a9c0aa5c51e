#include "trace/codecs.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cmath>
#include <limits>

#include "trace/big_endian.h"
#include "trace/codec_kernels.h"
#include "trace/codec_words.h"

namespace halvern {

namespace {

/// The N bytes of `raw` from `offset` on, which must be there.
template <std::size_t N>
Bytes<N> bytes_at(std::span<const std::byte> raw, std::size_t offset) {
    return raw.subspan(offset).first<N>();
}

/// 24-bit two's complement.
int signed_24(std::uint32_t word) { return static_cast<int>(word ^ 0x800000) - 0x800000; }

/// How many of `samples` have all of their `size` bytes in `raw`; the others become 0.
std::size_t zero_missing(std::span<const std::byte> raw, std::size_t size,
                         std::span<float> samples) {
    const std::size_t whole = std::min(samples.size(), raw.size() / size);
    std::ranges::fill(samples.subspan(whole), 0.0f);
    return whole;
}

}  // namespace

float decode_ibm(std::uint32_t word) { return std::bit_cast<float>(ieee_from_ibm(word)); }
std::uint32_t encode_ibm(float value) { return ibm_from_ieee(std::bit_cast<std::uint32_t>(value)); }

void decode_ieee(std::span<const std::byte> raw, std::span<float> samples) {
    assert(raw.size() / 4 >= samples.size());
    codec_kernels().swap_words(raw.data(), std::as_writable_bytes(samples).data(), samples.size());
}

void decode_ibm(std::span<const std::byte> raw, std::span<float> samples) {
    assert(raw.size() / 4 >= samples.size());
    codec_kernels().decode_ibm(raw.data(), samples.data(), samples.size());
}

void decode_int16(std::span<const std::byte> raw, double scale, std::span<float> samples) {
    assert(raw.size() / 2 >= samples.size());
    // Where the scale fits a float, one float product rounds as the double product does: an exact
    // product, rounded once.
    const auto narrow = static_cast<float>(scale);
    if (static_cast<double>(narrow) == scale && std::isfinite(narrow)) {
        codec_kernels().decode_int16(raw.data(), narrow, samples.data(), samples.size());
        return;
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i] = static_cast<float>(get_i16(bytes_at<2>(raw, 2 * i)) * scale);
    }
}

void encode_ieee(std::span<const float> samples, std::span<std::byte> raw) {
    assert(raw.size() / 4 >= samples.size());
    codec_kernels().swap_words(std::as_bytes(samples).data(), raw.data(), samples.size());
}

void encode_ibm(std::span<const float> samples, std::span<std::byte> raw) {
    assert(raw.size() / 4 >= samples.size());
    codec_kernels().encode_ibm(samples.data(), raw.data(), samples.size());
}

Int16Encoding encode_int16(std::span<const float> samples, std::span<std::byte> raw) {
    assert(raw.size() / 2 >= samples.size());
    const Magnitude magnitude = codec_kernels().magnitude(samples.data(), samples.size());
    int weight = 0;
    double largest = magnitude.largest;
    if (largest > 32767) {
        for (; largest > 32767; largest /= 2) --weight;
    } else if (largest > 0) {
        for (; largest < 16383.5; largest *= 2) ++weight;
    }
    // Up to 163 steps, more than one float factor holds. Both are powers of two, and scaling up is
    // exact; what scaling down rounds was far below 1 and becomes 0 either way.
    const int first = std::clamp(weight, -126, 127);
    codec_kernels().encode_int16(samples.data(), std::ldexp(1.0f, first),
                                 std::ldexp(1.0f, weight - first), raw.data(), samples.size());
    return {.weight = weight, .not_finite = magnitude.not_finite};
}

void decode_segd_8015(std::span<const std::byte> raw, double descale, std::span<float> samples) {
    // A group: the four exponents in two bytes, then a 16-bit sign and magnitude for each sample.
    constexpr std::size_t kGroupSamples = 4;
    constexpr std::size_t kGroupBytes = 10;
    constexpr std::size_t kMantissas = 2;
    const double unit = std::ldexp(descale, -15);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t group = i / kGroupSamples * kGroupBytes;
        const std::size_t member = i % kGroupSamples;
        const std::size_t place = group + kMantissas + 2 * member;
        if (place + 2 > raw.size()) {
            std::ranges::fill(samples.subspan(i), 0.0f);
            return;
        }
        const std::uint32_t exponents = get_u16(bytes_at<2>(raw, group));
        const std::uint32_t mantissa = get_u16(bytes_at<2>(raw, place));
        const int power = static_cast<int>(exponents >> (12 - 4 * member) & 0xF);
        const int scaled = static_cast<int>(mantissa & 0x7FFF) << power;
        samples[i] = static_cast<float>((mantissa & 0x8000 ? -scaled : scaled) * unit);
    }
}

void decode_segd_8036(std::span<const std::byte> raw, double descale, std::span<float> samples) {
    const double unit = std::ldexp(descale, -24);
    const std::size_t whole = zero_missing(raw, 3, samples);
    for (std::size_t i = 0; i < whole; ++i) {
        samples[i] = static_cast<float>(signed_24(get_u24(bytes_at<3>(raw, 3 * i))) * unit);
    }
}

void decode_segd_8048(std::span<const std::byte> raw, double descale, std::span<float> samples) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    const std::size_t whole = zero_missing(raw, 4, samples);
    for (std::size_t i = 0; i < whole; ++i) {
        const std::uint32_t word = get_u32(bytes_at<4>(raw, 4 * i));
        const int power = static_cast<int>(word >> 22 & 0x1FC) - 4 * 64 - 24;
        const double magnitude = std::ldexp(static_cast<double>(word & 0xFFFFFF), power);
        const double value = (word >> 31 ? -magnitude : magnitude) * descale;
        samples[i] = std::abs(value) <= kLargest ? static_cast<float>(value) : 0.0f;
    }
}

}  // namespace halvern
