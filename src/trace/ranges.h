#pragma once

#include <optional>
#include <string_view>
#include <vector>

namespace halvern {

/// One entry of a range list: "X", "X-Y" or "X-Y(Z)".
struct Range {
    double start = 0;
    double end = 0;
    double increment = 0;
    bool has_increment = false;
};
using RangeList = std::vector<Range>;

/// Parses "X-Y(Z)" entries separated by commas. Blanks are ignored outside parentheses; the first
/// "-" that is not an entry's first character separates X from Y; Z is an integer, and a Z of 0
/// counts as none. An empty text is an empty list. Nothing when a number is not valid.
std::optional<RangeList> parse_ranges(std::string_view text);

/// Whether `value` is in any entry; an empty list holds everything. An entry with an increment
/// holds the values between its ends, in either order, that are a whole number of increments from
/// its start. One without holds start <= value <= end only: given backwards it holds nothing.
bool in_ranges(double value, const RangeList& ranges);

}  // namespace halvern
