#include "segd/samples.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "trace/codecs.h"

namespace halvern::segd {

bool is_readable(int format) {
    return format == 8015 || format == 8036 || format == 8048 || format == 8058;
}

std::int64_t bytes_of(int format, std::int64_t samples, bool cut_group) {
    switch (format) {
        case 8015: {
            const std::int64_t last = samples % 4;
            return samples / 4 * 10 + (last == 0 ? 0 : cut_group ? 2 + 2 * last : 10);
        }
        case 8036:
            return samples * 3;
        default:
            return samples * 4;
    }
}

std::int64_t samples_in(int format, std::int64_t bytes) {
    switch (format) {
        case 8015: {
            const std::int64_t last = bytes % 10;
            return bytes / 10 * 4 + (last > 2 ? (last - 2) / 2 : 0);
        }
        case 8036:
            return bytes / 3;
        default:
            return bytes / 4;
    }
}

void descale_ieee(std::span<float> samples, double descale) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    for (float& sample : samples) {
        const double value = sample * descale;
        sample = std::abs(value) <= kLargest ? static_cast<float>(value) : 0.0f;  // no NaN either
    }
}

void decode(int format, std::span<const std::byte> raw, double descale, std::span<float> samples) {
    switch (format) {
        case 8015:
            return decode_segd_8015(raw, descale, samples);
        case 8036:
            return decode_segd_8036(raw, descale, samples);
        case 8048:
            return decode_segd_8048(raw, descale, samples);
        default:
            break;
    }
    const std::size_t there = std::min(samples.size(), raw.size() / 4);
    decode_ieee(raw.first(there * 4), samples.first(there));
    descale_ieee(samples.first(there), descale);
    std::ranges::fill(samples.subspan(there), 0.0f);
}

}  // namespace halvern::segd
