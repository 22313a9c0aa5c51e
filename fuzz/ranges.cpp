// Range lists: any text. What is accepted has numbers that are finite, one entry a comma.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "trace/ranges.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto ranges = halvern::parse_ranges(text);
    if (!ranges || ranges->empty()) return 0;
    const auto commas = static_cast<std::size_t>(std::ranges::count(text, ','));
    if (ranges->size() != commas + 1) __builtin_trap();
    for (const halvern::Range& range : *ranges) {
        if (!std::isfinite(range.start) || !std::isfinite(range.end)) __builtin_trap();
        const bool ordered = range.start <= range.end || range.has_increment;
        if (halvern::in_ranges(range.start, {range}) != ordered) __builtin_trap();
    }
    return 0;
}
