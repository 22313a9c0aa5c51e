#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace halvern::testing_support {

/// The parts of a tape image, byte by byte.
inline std::string word(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift & 0xFF);
    return bytes;
}
inline std::string block(std::string_view data, std::uint32_t flags = 0) {
    const std::string length = word(static_cast<std::uint32_t>(data.size()) | flags);
    return length + std::string(data) + (data.size() % 2 ? std::string(1, '\0') : "") + length;
}
inline std::string filemark() { return word(0); }

inline std::span<const std::byte> bytes_of(std::string_view text) {
    return std::as_bytes(std::span(text));
}
inline std::string text_of(std::span<const std::byte> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace halvern::testing_support
