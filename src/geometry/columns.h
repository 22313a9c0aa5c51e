#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace halvern {

/// Columns of a field in a record's line, counted from 1, both ends included.
struct Columns {
    int first;
    int last;

    int width() const { return last - first + 1; }
};

/// What of a field the line is long enough to hold.
std::string_view cut(std::string_view line, Columns columns);
/// Nothing but blanks, or beyond the line's end.
bool is_blank(std::string_view line, Columns columns);

struct NamedColumns {
    const char* name;
    Columns columns;
};
/// A field that cannot be meant as a number of its columns.
struct FieldFault {
    const char* field;  ///< its name
    int first_column;   ///< counted from 1
    int last_column;
};
/// The first of the fields that is neither blank nor read as a number.
std::optional<FieldFault> find_fault(std::string_view line, std::span<const NamedColumns> fields);

/// Writes a record field by field. What does not fit its columns is left blank there and counted,
/// so that it never moves or covers its neighbours.
class ColumnRecord {
public:
    explicit ColumnRecord(std::size_t width) : line_(width, ' ') {}

    /// A number to the right of its columns, with that many decimals; nothing, and not counted,
    /// when it is NaN.
    void number(Columns columns, double value, int decimals = 0);
    /// The same filled with zeros from the left.
    void digits(Columns columns, int value);
    /// A text to the left of its columns, cut to them.
    void text(Columns columns, std::string_view text);

    const std::string& line() const { return line_; }
    int misfits() const { return misfits_; }  ///< numbers that did not fit

private:
    std::string line_;
    int misfits_ = 0;
};

}  // namespace halvern
