#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace halvern {

/// A table of numbers as a parameter window asks for it: one row an entry.
struct NumberSheet {
    struct Column {
        const char* title;   ///< above the column
        const char* label;   ///< in messages: "Offset"
        const char* field;   ///< the same in capitals: "OFFSET"
        bool whole = false;  ///< 32-bit integers only
    };
    const char* entry;                 ///< what a row is, in messages: "Offset/Time"
    std::vector<Column> columns;       ///< from left to right
    std::vector<std::size_t> quoted;   ///< the columns in the order in which messages quote them
    std::vector<std::size_t> checked;  ///< and in which they are checked

    using Cells = std::vector<std::vector<std::string>>;

    std::vector<const char*> titles() const;

    /// The numbers of a sheet, column by column a row; rows that are empty throughout are left out.
    /// Gives what is wrong with the first row at fault, or an empty text. Numbers must be finite,
    /// and a row is either filled or empty.
    std::string read(const Cells& cells, std::vector<std::vector<double>>& rows) const;
};

/// A number as a cell or a flow file line shows it, with one decimal.
std::string one_decimal(double number);

}  // namespace halvern
