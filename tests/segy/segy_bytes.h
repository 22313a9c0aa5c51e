#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace halvern::testing_support {

/// The value of `width` big-endian bytes at `offset`, and the other way.
std::uint32_t big_endian(const std::string& bytes, std::size_t offset, int width);
void put_big_endian(std::string& bytes, std::size_t offset, int width, std::uint32_t value);

/// Fields of the 3600 header bytes at the standard's places; the text is EBCDIC blanks.
struct HeaderFields {
    int interval_us = 4000;      // 3216
    int samples = 4;             // 3220
    int field_samples = 4;       // 3222
    int code = 5;                // 3224
    std::uint32_t revision = 0;  // 3500
    int text_headers = 0;        // 3504
};
std::string header_bytes(const HeaderFields& fields);

/// A field of a trace header: its offset, width and value.
struct TraceField {
    std::size_t offset;
    int width;
    int value;
};
/// A trace record: the header fields, then `words` of `width` bytes each.
std::string record_bytes(const std::vector<TraceField>& header, int width,
                         const std::vector<std::uint32_t>& words);

}  // namespace halvern::testing_support
