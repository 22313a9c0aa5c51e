#pragma once

#include "trace/big_endian.h"

namespace halvern::segd {

/// Bytes of a general header block, a channel set descriptor or a trace header extension.
inline constexpr std::size_t kBlockBytes = 32;

constexpr int get_i24(Bytes<3> b) {
    const int value = static_cast<int>(get_u24(b));
    return value < 0x800000 ? value : value - 0x1000000;
}

/// Three decimal digits: the low half of the first byte and the second byte; -1 when one is
/// above 9.
constexpr int get_bcd3(Bytes<2> b) {
    const int high = std::to_integer<int>(b[0] & std::byte{0x0F});
    const int low = get_bcd(b.last<1>());
    return high > 9 || low < 0 ? -1 : high * 100 + low;
}

/// A line or point number: a signed 24-bit whole part and 16 bits of fraction.
constexpr double get_position(Bytes<3> whole, Bytes<2> fraction) {
    return get_i24(whole) + get_u16(fraction) / 65536.0;
}

constexpr int high_nibble(std::byte b) { return std::to_integer<int>(b >> 4); }
constexpr int low_nibble(std::byte b) { return std::to_integer<int>(b & std::byte{0x0F}); }

}  // namespace halvern::segd
