#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

namespace halvern {

/// Exactly N bytes of a record. Fields are cut from it with .subspan<offset, length>(), so a field
/// past the record's end does not compile.
template <std::size_t N>
using Bytes = std::span<const std::byte, N>;
template <std::size_t N>
using MutableBytes = std::span<std::byte, N>;

constexpr std::uint32_t get_u16(Bytes<2> b) {
    return std::to_integer<std::uint32_t>(b[0]) << 8 | std::to_integer<std::uint32_t>(b[1]);
}
constexpr std::uint32_t get_u24(Bytes<3> b) {
    return get_u16(b.first<2>()) << 8 | std::to_integer<std::uint32_t>(b[2]);
}
constexpr std::uint32_t get_u32(Bytes<4> b) {
    return get_u16(b.first<2>()) << 16 | get_u16(b.last<2>());
}
constexpr int get_i16(Bytes<2> b) { return static_cast<std::int16_t>(get_u16(b)); }
constexpr int get_i32(Bytes<4> b) { return static_cast<std::int32_t>(get_u32(b)); }
constexpr float get_f32(Bytes<4> b) { return std::bit_cast<float>(get_u32(b)); }

/// Packed decimal digits, two a byte, high nibble first; -1 when a digit is above 9.
/// At most 4 bytes, so that the value fits.
template <std::size_t N>
constexpr int get_bcd(Bytes<N> b) {
    static_assert(N >= 1 && N <= 4);
    int value = 0;
    for (const std::byte pair : b) {
        const int high = std::to_integer<int>(pair >> 4);
        const int low = std::to_integer<int>(pair & std::byte{0x0F});
        if (high > 9 || low > 9) return -1;
        value = value * 100 + high * 10 + low;
    }
    return value;
}

constexpr void put_u16(MutableBytes<2> b, std::uint32_t value) {
    b[0] = static_cast<std::byte>(value >> 8);
    b[1] = static_cast<std::byte>(value);
}
constexpr void put_u32(MutableBytes<4> b, std::uint32_t value) {
    put_u16(b.first<2>(), value >> 16);
    put_u16(b.last<2>(), value);
}
/// Keeps the low 16 bits of `value`.
constexpr void put_i16(MutableBytes<2> b, int value) {
    put_u16(b, static_cast<std::uint32_t>(value));
}
constexpr void put_i32(MutableBytes<4> b, int value) {
    put_u32(b, static_cast<std::uint32_t>(value));
}
constexpr void put_f32(MutableBytes<4> b, float value) {
    put_u32(b, std::bit_cast<std::uint32_t>(value));
}

}  // namespace halvern
