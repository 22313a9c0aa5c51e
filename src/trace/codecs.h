#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvern {

/// Single words, the definition of the conversions; the span forms below give the same bits.
///
/// IBM float to IEEE: overflow becomes the largest finite float of the sign, what would be denormal
/// becomes 0. Only the word 0 is taken as zero outright: a word with a zero fraction but an
/// exponent keeps that exponent.
float decode_ibm(std::uint32_t word);
/// IEEE to IBM; the fraction is truncated, never rounded. Zero words give 0.
std::uint32_t encode_ibm(float value);

/// Span conversions. `raw` is big-endian file bytes, `raw.size()` at least the encoding's size of
/// `samples.size()` samples; both sides may have any alignment and must not overlap. They run
/// vectorised where the processor can (chosen once at run time) with the same bits everywhere.
void decode_ieee(std::span<const std::byte> raw, std::span<float> samples);
void decode_ibm(std::span<const std::byte> raw, std::span<float> samples);
void decode_int16(std::span<const std::byte> raw, double scale, std::span<float> samples);
void encode_ieee(std::span<const float> samples, std::span<std::byte> raw);
void encode_ibm(std::span<const float> samples, std::span<std::byte> raw);

/// What a 16-bit encoding found.
struct Int16Encoding {
    int weight = 0;               ///< k: a stored integer is the sample times 2 to the power k
    std::int64_t not_finite = 0;  ///< NaN written as 0, infinities as the end of their sign
};
/// Scales by the power of two that brings the largest finite magnitude m to 16383.5 … 32767 (k = 0
/// for m = 0), truncates toward zero and stores big-endian 16-bit integers.
Int16Encoding encode_int16(std::span<const float> samples, std::span<std::byte> raw);

/// SEG-D sample encodings, each times `descale`. `raw` may end early: what is missing decodes as 0.
void decode_segd_8015(std::span<const std::byte> raw, double descale, std::span<float> samples);
void decode_segd_8036(std::span<const std::byte> raw, double descale, std::span<float> samples);
/// What is beyond the largest float becomes 0.
void decode_segd_8048(std::span<const std::byte> raw, double descale, std::span<float> samples);

}  // namespace halvern
