#pragma once

#include <string>

namespace halvern {

/// Readers of KEY=value lines. `key` includes its "=". Each gives 1, and the value, when `line`
/// starts with the key exactly; else 0, with the value untouched. None fails on any text, and none
/// depends on the locale.

/// The rest of the line, less one line end ("\n" or "\r") at its end.
int ReadKey(const char* line, const char* key, std::string& value);
/// The decimal integer that the rest begins with, after blanks; 0 when there is none. A number
/// that does not fit is held at the nearest int.
int ReadKey(const char* line, const char* key, int& value);
/// The decimal real number that the rest begins with, after blanks; 0 when there is none or when it
/// is not a finite float.
int ReadKey(const char* line, const char* key, float& value);
/// The same in double precision, for coordinates.
int ReadKey(const char* line, const char* key, double& value);

}  // namespace halvern
