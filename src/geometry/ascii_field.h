#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace halvern {

/// How a trace's value must compare with the record's: trace value, operator, record value. Any
/// other number never matches.
enum AsciiCompare {
    kEqual = 0,
    kNotEqual = 1,
    kLess = 2,
    kLessOrEqual = 3,
    kGreater = 4,
    kGreaterOrEqual = 5,
};

/// A column field of an ASCII file, and the header word that it belongs to.
struct AsciiField {
    std::string name;      ///< of the header word
    int first_column = 0;  ///< counted from 1
    int last_column = 0;   ///< inclusive
    int compare = kEqual;  ///< an AsciiCompare; of match fields only
    bool trace = true;     ///< whether a line with the record key completes a record
    std::string key;       ///< what a line must begin with to hold the field; empty: every line
    int word = -1;         ///< index of the header word, once looked up
    bool floating = true;  ///< whether that word is R4

    bool applies_to(std::string_view line) const { return line.starts_with(key); }
    bool completes() const { return key.empty() || trace; }

    /// The number in the field, 0 where there is none or where the line has less than four
    /// characters from the field's first column on, its end (`ended`) counted as one. At most 51
    /// characters are looked at. For integer words it is rounded, halves away from zero.
    double value(std::string_view line, bool ended) const;

    /// As the flow file spells it: "NAME FIRST LAST", and with a record key " TRACE KEY" after it;
    /// the compare type and a blank come before it for match fields.
    std::string data_text() const;
    std::string match_text() const;
    static AsciiField parse_data(std::string_view text);
    static AsciiField parse_match(std::string_view text);

    /// The columns as a person types them, "10-20".
    std::string range_text() const;
};

/// The operator's sign, "=", …; "?" for a number that is none.
const char* ascii_compare_label(int compare);
/// The number of the sign.
std::optional<int> ascii_compare_of(std::string_view label);

}  // namespace halvern
