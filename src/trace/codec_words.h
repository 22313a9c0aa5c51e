#pragma once

#include <bit>
#include <cstdint>

namespace halvern {

/// The bits of a big-endian word as they were loaded, in this processor's order; and back.
[[gnu::always_inline]] inline std::uint32_t big_endian_word(std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap32(word);
    return word;
}
[[gnu::always_inline]] inline std::uint16_t big_endian_half(std::uint16_t half) {
    if constexpr (std::endian::native == std::endian::little) half = __builtin_bswap16(half);
    return half;
}

/// One IBM word as the bits of an IEEE float. Free of branches and of loops: turning the fraction
/// into a float normalises it exactly, for a float has as many digits as the fraction has bits.
[[gnu::always_inline]] inline std::uint32_t ieee_from_ibm(std::uint32_t ibm) {
    const std::uint32_t sign = ibm & 0x80000000;
    std::uint32_t fraction = ibm & 0x00FFFFFF;
    // Zero becomes the leading bit alone: digits zero, and the exponent as a zero fraction has it.
    fraction |= (fraction - 1) >> 8 & 0x00800000;
    const auto digits =
        std::bit_cast<std::uint32_t>(static_cast<float>(static_cast<std::int32_t>(fraction)));
    // IEEE: 127 + power of 2. IBM: fraction / 2^24 x 2^(4 x (power - 64)); -280 = -24 - 256.
    const auto exponent = static_cast<std::int32_t>(digits >> 23) +
                          static_cast<std::int32_t>(ibm >> 22 & 0x1FC) - 280;
    // Clamps as masks made of sign bits: a branch would keep the loops around it from being
    // vectorised, and the compiler would make one of a comparison.
    const auto above = static_cast<std::uint32_t>((254 - exponent) >> 31);
    const auto normal = static_cast<std::uint32_t>(-exponent >> 31);
    const std::uint32_t magnitude =
        static_cast<std::uint32_t>(exponent) << 23 | (digits & 0x007FFFFF);
    return (sign | (magnitude & ~above) | (0x7F7FFFFF & above)) & normal;
}

/// The bits of one IEEE float as an IBM word.
[[gnu::always_inline]] inline std::uint32_t ibm_from_ieee(std::uint32_t ieee) {
    const std::uint32_t exponent = ieee >> 23 & 0xFF;  // 126 + power of 2 of a fraction below 1
    // Up to three bits of the fraction make way for the next power of 16: 133 = 4 x 64 - 126 + 3.
    const std::uint32_t power = (exponent + 133) >> 2;
    const std::uint32_t shift = (2 - exponent) & 3;
    const std::uint32_t fraction = ((ieee & 0x007FFFFF) | 0x00800000) >> shift;
    return ieee == 0 ? 0 : (ieee & 0x80000000) | power << 24 | fraction;
}

}  // namespace halvern
