#include "foundation/words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace halvern {

std::string grouped(std::int64_t number) {
    std::string text = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = text.size(); at > first + 3;) text.insert(at -= 3, ",");
    return text;
}

std::string in_words(double number, int digits) {
    char text[40];
    std::snprintf(text, sizeof text, "%.*g", digits, number);
    // Rounded, but not with an exponent where people would not write one.
    const double rounded = std::strtod(text, nullptr);
    if (std::fabs(rounded) < 1e7) {
        constexpr int kMostDigits = 10;
        char plain[40];
        std::snprintf(plain, sizeof plain, "%.*g", kMostDigits, rounded);
        return plain;
    }
    return text;
}

std::string counted(std::int64_t number, std::string_view singular) {
    return grouped(number) + ' ' + std::string(singular) + (number == 1 ? "" : "s");
}

std::vector<std::string> split_list(std::string_view text) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t comma = text.find(',');
        std::string_view part = text.substr(0, comma);
        while (part.starts_with(' ')) part.remove_prefix(1);
        while (part.ends_with(' ')) part.remove_suffix(1);
        if (!part.empty()) parts.emplace_back(part);
        text = comma == std::string_view::npos ? std::string_view{} : text.substr(comma + 1);
    }
    return parts;
}

bool is_one_line(std::string_view text) {
    return std::ranges::none_of(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
}

}  // namespace halvern
