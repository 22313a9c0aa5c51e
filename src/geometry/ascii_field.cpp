#include "geometry/ascii_field.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>

#include "geometry/decimal_field.h"

namespace halvern {

namespace {

/// What of a field is looked at, in characters.
constexpr int kWidest = 51;
/// What a line must have of a field, its end counted, for the field to be read at all.
constexpr int kLeast = 4;

constexpr const char* kCompareLabels[] = {"=", "!=", "<", "<=", ">", ">="};

/// Takes the blanks and the word after them from the front of `text`.
std::string_view take_word(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace

double AsciiField::value(std::string_view line, bool ended) const {
    const auto length = static_cast<std::int64_t>(line.size()) + (ended ? 1 : 0);
    const std::int64_t start = std::int64_t{first_column} - 1;
    const std::int64_t width = std::min<std::int64_t>(last_column - start, kWidest);
    if (start < 0 || width < 1 || length < start + kLeast) return 0;
    const double number =
        decimal_real(line.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(width)));
    if (floating) return number;
    return std::trunc(number >= 0 ? number + 0.5 : number - 0.5);
}

std::string AsciiField::data_text() const {
    std::string text =
        name + ' ' + std::to_string(first_column) + ' ' + std::to_string(last_column);
    if (!key.empty()) text += (trace ? " 1 " : " 0 ") + key;
    return text;
}

std::string AsciiField::match_text() const { return std::to_string(compare) + ' ' + data_text(); }

AsciiField AsciiField::parse_data(std::string_view text) {
    AsciiField field;
    const std::size_t blank = std::min(text.find(' '), text.size());
    field.name = text.substr(0, blank);
    text.remove_prefix(blank);
    field.first_column = decimal_int(take_word(text));
    field.last_column = decimal_int(take_word(text));
    // Behind the numbers: a blank, the trace flag as one digit, a blank, the key to the end.
    if (text.size() > 1) field.trace = text[1] != '0';
    if (text.size() > 3) field.key = text.substr(3);
    return field;
}

AsciiField AsciiField::parse_match(std::string_view text) {
    constexpr int kNoCompare = 9;
    AsciiField field = parse_data(text.substr(std::min<std::size_t>(2, text.size())));
    const bool digit = !text.empty() && text[0] >= '0' && text[0] <= '9';
    field.compare = digit ? text[0] - '0' : kNoCompare;
    return field;
}

std::string AsciiField::range_text() const {
    return std::to_string(first_column) + '-' + std::to_string(last_column);
}

const char* ascii_compare_label(int compare) {
    const bool known = compare >= kEqual && compare <= kGreaterOrEqual;
    return known ? kCompareLabels[compare] : "?";
}

std::optional<int> ascii_compare_of(std::string_view label) {
    const auto found = std::find(std::begin(kCompareLabels), std::end(kCompareLabels), label);
    if (found == std::end(kCompareLabels)) return {};
    return static_cast<int>(found - std::begin(kCompareLabels));
}

}  // namespace halvern
