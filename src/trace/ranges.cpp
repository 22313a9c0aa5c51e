#include "trace/ranges.h"

#include <charconv>
#include <cmath>
#include <string>

namespace halvern {

namespace {

/// The whole of `text` as a number of type T, with an optional sign; nothing for anything else,
/// and for the words "inf" and "nan", which are no place on a line.
template <class T>
std::optional<T> number(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return {};
    }
    if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return {};
    T value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return {};
    return value;
}

std::optional<Range> parse_entry(std::string_view text) {
    std::string numbers;  // the entry without blanks and increment
    std::optional<std::string_view> increment;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(') {
            const std::size_t close = text.find(')', i);
            if (close == std::string_view::npos || increment) return {};
            increment = text.substr(i + 1, close - i - 1);
            i = close;
        } else if (text[i] != ' ') {
            numbers += text[i];
        }
    }

    // Not at the first character: there it is the sign of X.
    const std::size_t dash = numbers.find('-', 1);
    const std::string_view all = numbers;
    const std::optional<double> start = number<double>(all.substr(0, dash));
    const std::optional<double> end =
        dash == std::string::npos ? start : number<double>(all.substr(dash + 1));
    if (!start || !end) return {};

    Range range{.start = *start, .end = *end};
    if (increment) {
        const std::optional<int> step = number<int>(*increment);
        if (!step) return {};
        range.increment = *step;
        range.has_increment = *step != 0;
    }
    return range;
}

bool contains(const Range& range, double value) {
    if (!range.has_increment) return range.start <= value && value <= range.end;
    const bool between = (range.start <= value && value <= range.end) ||
                         (range.end <= value && value <= range.start);
    const double steps = (value - range.start) / range.increment;
    return between && steps == std::trunc(steps);
}

}  // namespace

std::optional<RangeList> parse_ranges(std::string_view text) {
    RangeList ranges;
    if (text.find_first_not_of(' ') == std::string_view::npos) return ranges;
    for (;;) {
        const std::size_t comma = text.find(',');
        const std::optional<Range> range = parse_entry(text.substr(0, comma));
        if (!range) return {};
        ranges.push_back(*range);
        if (comma == std::string_view::npos) return ranges;
        text.remove_prefix(comma + 1);
    }
}

bool in_ranges(double value, const RangeList& ranges) {
    if (ranges.empty()) return true;
    for (const Range& range : ranges) {
        if (contains(range, value)) return true;
    }
    return false;
}

}  // namespace halvern
