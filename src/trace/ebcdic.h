#pragma once

#include <cstddef>
#include <span>

namespace halvern {

/// Text conversion through the 256-entry tables that POSIX `dd` uses for conv=ebcdic and
/// conv=ascii. The two are inverse to each other.
std::byte ascii_to_ebcdic(std::byte character);
std::byte ebcdic_to_ascii(std::byte character);

/// The same for n bytes; source and destination may be the same array and must be of one length.
void ascii_to_ebcdic(std::span<const std::byte> source, std::span<std::byte> destination);
void ebcdic_to_ascii(std::span<const std::byte> source, std::span<std::byte> destination);

}  // namespace halvern
