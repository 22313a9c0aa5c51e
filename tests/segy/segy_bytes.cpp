#include "segy/segy_bytes.h"

namespace halvern::testing_support {

std::uint32_t big_endian(const std::string& bytes, std::size_t offset, int width) {
    std::uint32_t value = 0;
    for (int i = 0; i < width; ++i) {
        value =
            value << 8 | static_cast<unsigned char>(bytes.at(offset + static_cast<std::size_t>(i)));
    }
    return value;
}

void put_big_endian(std::string& bytes, std::size_t offset, int width, std::uint32_t value) {
    for (int i = width - 1; i >= 0; --i, value >>= 8) {
        bytes.at(offset + static_cast<std::size_t>(i)) = static_cast<char>(value);
    }
}

std::string header_bytes(const HeaderFields& fields) {
    std::string bytes = std::string(3200, '\x40') + std::string(400, '\0');
    put_big_endian(bytes, 3216, 2, static_cast<std::uint32_t>(fields.interval_us));
    put_big_endian(bytes, 3220, 2, static_cast<std::uint32_t>(fields.samples));
    put_big_endian(bytes, 3222, 2, static_cast<std::uint32_t>(fields.field_samples));
    put_big_endian(bytes, 3224, 2, static_cast<std::uint32_t>(fields.code));
    put_big_endian(bytes, 3500, 2, fields.revision);
    put_big_endian(bytes, 3504, 2, static_cast<std::uint32_t>(fields.text_headers));
    return bytes;
}

std::string record_bytes(const std::vector<TraceField>& header, int width,
                         const std::vector<std::uint32_t>& words) {
    std::string bytes(240 + words.size() * static_cast<std::size_t>(width), '\0');
    for (const TraceField& field : header) {
        put_big_endian(bytes, field.offset, field.width, static_cast<std::uint32_t>(field.value));
    }
    std::size_t offset = 240;
    for (const std::uint32_t word : words) {
        put_big_endian(bytes, offset, width, word);
        offset += static_cast<std::size_t>(width);
    }
    return bytes;
}

}  // namespace halvern::testing_support
