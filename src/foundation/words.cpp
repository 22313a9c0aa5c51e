#include "foundation/words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace halvern {

namespace {

std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

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

std::string_view next_field(std::string_view& line) {
    constexpr std::string_view kBetween = " \t\r,";
    line.remove_prefix(std::min(line.find_first_not_of(kBetween), line.size()));
    const std::string_view field = line.substr(0, line.find_first_of(kBetween));
    line.remove_prefix(field.size());
    return field;
}

bool is_one_line(std::string_view text) {
    return std::ranges::none_of(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; });
}

char32_t next_character(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80    ? 1
                               : first < 0xC2  ? 0  // goes on, or would be longer than it must be
                               : first < 0xE0  ? 2
                               : first < 0xF0  ? 3
                               : first <= 0xF4 ? 4
                                               : 0;
    char32_t character = length > 1 ? first & (0x7Fu >> length) : first;
    bool whole = length > 0 && length <= text.size();
    for (std::size_t i = 1; whole && i < length; ++i) {
        whole = (byte(i) & 0xC0) == 0x80;
        character = character << 6 | (byte(i) & 0x3Fu);
    }
    constexpr char32_t kShortest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character < 0xE000;
    if (!whole || character < kShortest[length] || surrogate || character > 0x10FFFF) {
        text.remove_prefix(1);
        return kNoCharacter;
    }
    text.remove_prefix(length);
    return character;
}

std::string printable(std::string_view text) {
    std::string shown;
    shown.reserve(text.size());
    while (!text.empty()) {
        const std::string_view before = text;
        const char32_t c = next_character(text);
        const bool control = (c < ' ' && c != '\n' && c != '\t') || (c >= 0x7F && c < 0xA0);
        if (c == '\t') {
            shown += ' ';
        } else if (control || c == kNoCharacter) {
            shown += '?';
        } else {
            shown += before.substr(0, before.size() - text.size());
        }
    }
    return shown;
}

std::string upper(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
    constexpr std::size_t kLongest = 100;
    if (word.size() > kLongest) return {};
    std::string found;
    std::size_t least = word.size() / 3 + 1;  // more is another word
    for (const std::string& candidate : candidates) {
        const std::size_t distance = edit_distance(upper(word), upper(candidate));
        if (distance > least || (distance == least && !found.empty())) continue;
        least = distance;
        found = candidate;
    }
    return found;
}

}  // namespace halvern
