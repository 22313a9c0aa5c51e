#include "geometry/decimal_field.h"

#include <charconv>
#include <cstdint>
#include <limits>

namespace halvern {

namespace {

/// What the decimal conversions skip before a number: blank, tab to carriage return.
constexpr bool is_space(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// Where the number in a field begins and ends.
struct Scan {
    const char* start;           ///< of the sign or first digit; null when there is no number
    const char* end;             ///< after the last character of the number
    std::uint64_t mantissa = 0;  ///< its digits without the point, when there are at most 18
    int digits = 0;              ///< leading zeros counted
    int decimals = 0;            ///< digits after the point
    bool negative = false;
    bool exponent = false;
};

Scan scan_number(std::string_view field) {
    const char* at = field.data();
    const char* const stop = at + field.size();
    while (at != stop && is_space(*at)) ++at;
    Scan scan{.start = at, .end = at};
    if (at != stop && (*at == '-' || *at == '+')) scan.negative = *at++ == '-';
    bool point = false;
    for (; at != stop && (is_digit(*at) || (*at == '.' && !point)); ++at) {
        if (*at == '.') {
            point = true;
            continue;
        }
        if (++scan.digits <= 18) {
            scan.mantissa = scan.mantissa * 10 + static_cast<std::uint64_t>(*at - '0');
        }
        scan.decimals += point;
    }
    if (scan.digits == 0) return {.start = nullptr, .end = nullptr};
    scan.end = at;
    if (at != stop && (*at == 'e' || *at == 'E')) {
        ++at;
        if (at != stop && (*at == '-' || *at == '+')) ++at;
        if (at != stop && is_digit(*at)) {
            while (at != stop && is_digit(*at)) ++at;
            scan.end = at;
            scan.exponent = true;
        }
    }
    return scan;
}

}  // namespace

int decimal_int(std::string_view field) {
    const char* at = field.data();
    const char* const stop = at + field.size();
    while (at != stop && is_space(*at)) ++at;
    bool negative = false;
    if (at != stop && (*at == '-' || *at == '+')) negative = *at++ == '-';
    constexpr std::int64_t kBeyond = std::int64_t{1} << 32;
    std::int64_t value = 0;
    for (; at != stop && is_digit(*at); ++at) {
        if (value < kBeyond) value = value * 10 + (*at - '0');
    }
    if (negative) value = -value;
    using Limits = std::numeric_limits<int>;
    if (value > Limits::max()) return Limits::max();
    if (value < Limits::min()) return Limits::min();
    return static_cast<int>(value);
}

double decimal_real(std::string_view field) {
    const Scan scan = scan_number(field);
    if (!scan.start) return 0;
    if (!scan.exponent && scan.digits <= 15) {
        // Digits and power of ten are both exact, so that the quotient is rounded only once.
        constexpr double kPowers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
        const double value = static_cast<double>(scan.mantissa) / kPowers[scan.decimals];
        return scan.negative ? -value : value;
    }
    const char* start = scan.start;
    if (*start == '+') ++start;  // from_chars takes no plus sign
    double value = 0;
    const auto result = std::from_chars(start, scan.end, value);
    if (result.ec == std::errc{}) return value;
    // Out of range: too large unless the exponent is negative.
    if (std::string_view(start, scan.end).find_first_of("eE") != std::string_view::npos &&
        std::string_view(start, scan.end).find('-', 1) != std::string_view::npos) {
        return 0;
    }
    return scan.negative ? std::numeric_limits<double>::lowest()
                         : std::numeric_limits<double>::max();
}

double decimal_real(std::string_view field, int decimals) {
    double value = decimal_real(field);
    if (field.find('.') != field.npos) return value;
    double divisor = 1;
    for (; decimals > 0; --decimals) divisor *= 10;
    return value / divisor;
}

FieldText classify_field(std::string_view field) {
    const char* at = field.data();
    const char* const stop = at + field.size();
    while (at != stop && is_blank(*at)) ++at;
    if (at == stop) return FieldText::kBlank;
    const char* digits_end = at;
    while (digits_end != stop && is_digit(*digits_end)) ++digits_end;
    if (digits_end == stop) return FieldText::kNumber;  // as mostly
    const Scan number = scan_number({at, stop});
    if (!number.end || number.start != at) return FieldText::kOther;
    for (at = number.end; at != stop; ++at) {
        if (is_blank(*at) && scan_number({at, stop}).start) return FieldText::kOther;
    }
    return FieldText::kNumber;
}

}  // namespace halvern
