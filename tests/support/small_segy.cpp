#include "support/small_segy.h"

#include <bit>
#include <cstdint>

namespace halvern::testing_support {

namespace {

void put(std::string& bytes, std::size_t offset, int width, std::uint32_t value) {
    for (int i = 0; i < width; ++i) {
        bytes[offset + static_cast<std::size_t>(i)] =
            static_cast<char>(value >> (8 * (width - 1 - i)));
    }
}

}  // namespace

std::string small_segy(int interval_us, int samples, const std::vector<SmallTrace>& traces) {
    std::string file(3600, '\x40');  // EBCDIC blanks
    file.replace(3200, 400, std::string(400, '\0'));
    put(file, 3216, 2, static_cast<std::uint32_t>(interval_us));
    put(file, 3220, 2, static_cast<std::uint32_t>(samples));
    put(file, 3224, 2, 5);
    for (const SmallTrace& trace : traces) {
        std::string record(240 + static_cast<std::size_t>(samples) * 4, '\0');
        put(record, 8, 4, static_cast<std::uint32_t>(trace.ffid));
        put(record, 12, 4, static_cast<std::uint32_t>(trace.channel));
        put(record, 28, 2, 1);
        put(record, 36, 4, static_cast<std::uint32_t>(trace.offset));
        for (std::size_t i = 0; i < trace.samples.size(); ++i) {
            put(record, 240 + i * 4, 4, std::bit_cast<std::uint32_t>(trace.samples[i]));
        }
        file += record;
    }
    return file;
}

}  // namespace halvern::testing_support
