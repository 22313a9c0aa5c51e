#pragma once

#include <string_view>

namespace halvern {

/// Conversions of a text field as C's decimal conversions do them: leading blanks are skipped, the
/// longest number from there is taken, text behind it is ignored, and a field without a number is
/// 0. Unlike them they know no locale, no hexadecimal and no names for infinity; a number beyond
/// the type's range is held at its end.
int decimal_int(std::string_view field);
double decimal_real(std::string_view field);

/// Whether the field is one decimal number with nothing but blanks around it.
bool is_decimal(std::string_view field);

/// Without the blanks and tabs on both sides.
std::string_view trimmed(std::string_view field);

}  // namespace halvern
