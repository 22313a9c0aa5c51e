#include "foundation/key_readers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string_view>

namespace halvern {

namespace {

// The text behind the key, or null.
const char* after_key(const char* line, const char* key) {
    const std::size_t length = std::strlen(key);
    return std::strncmp(line, key, length) == 0 ? line + length : nullptr;
}

// Where a number may begin. from_chars knows a minus only.
std::string_view number_text(const char* rest) {
    std::string_view text(rest);
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

template <class Real>
int read_real(const char* line, const char* key, Real& value) {
    const char* const rest = after_key(line, key);
    if (!rest) return 0;
    const std::string_view text = number_text(rest);
    Real number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    value = end.ec == std::errc{} && std::isfinite(number) ? number : Real{0};
    return 1;
}

}  // namespace

int ReadKey(const char* line, const char* key, std::string& value) {
    const char* const rest = after_key(line, key);
    if (!rest) return 0;
    value = rest;
    if (value.ends_with('\n') || value.ends_with('\r')) value.pop_back();
    return 1;
}

int ReadKey(const char* line, const char* key, int& value) {
    const char* const rest = after_key(line, key);
    if (!rest) return 0;
    const std::string_view text = number_text(rest);
    int number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec == std::errc::result_out_of_range) {
        number =
            text.front() == '-' ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
    }
    value = number;
    return 1;
}

int ReadKey(const char* line, const char* key, float& value) { return read_real(line, key, value); }

int ReadKey(const char* line, const char* key, double& value) {
    return read_real(line, key, value);
}

}  // namespace halvern
