#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// "1,234,567".
std::string grouped(std::int64_t number);
std::string in_words(std::integral auto number) {
    return grouped(static_cast<std::int64_t>(number));
}
/// A number as short as it is exact enough to read: "0.25", "1500", "3.4e+38".
std::string in_words(double number, int digits = 6);
/// "1 trace", "2,000 traces".
std::string counted(std::int64_t number, std::string_view singular);

/// "FFID,CHAN" as its two parts; blanks around them do not count.
std::vector<std::string> split_list(std::string_view text);

/// In capitals; ASCII only.
std::string upper(std::string text);

/// The candidate that differs least from `word`, when it is near; else an empty text.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

/// The next value of a line of text, which is taken off it: up to the next blank, tab,
/// comma or carriage return. Empty at the end.
std::string_view next_field(std::string_view& line);

/// Whether a name or path can be a line of the files that the commands keep.
bool is_one_line(std::string_view text);

/// Takes the first character off UTF-8 text that is not empty. A byte that belongs to none comes as
/// kNoCharacter, alone.
inline constexpr char32_t kNoCharacter = 0xFFFD;
char32_t next_character(std::string_view& text);

/// Text of a file or a person as it may be shown: line ends stay, a tab becomes a blank, and what
/// would steer a terminal, or is no UTF-8, becomes "?".
std::string printable(std::string_view text);

}  // namespace halvern
