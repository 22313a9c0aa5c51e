#pragma once

#include <string_view>

namespace halvern {

/// Conversions of a text field as C's decimal conversions do them: leading blanks are skipped, the
/// longest number from there is taken, text after it is ignored, and a field without a number is
/// 0. Unlike them they know no locale, no hexadecimal and no names for infinity; a number beyond
/// the type's range is held at its end.
int decimal_int(std::string_view field);
double decimal_real(std::string_view field);
/// The same where a number without a point has its last `decimals` digits after one, as "5312345"
/// with one decimal is 531234.5.
double decimal_real(std::string_view field, int decimals);

/// What a field holds beside blanks and tabs. Text may follow its number ("101A", "12 m"),
/// but no further number after a blank: that would be another field's.
enum class FieldText { kBlank, kNumber, kOther };
FieldText classify_field(std::string_view field);

}  // namespace halvern
