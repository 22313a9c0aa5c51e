#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace halvern {

/// Rows of text under titles, as a person reads them or as CSV.
class Table {
public:
    static constexpr std::size_t kWidth = 80;  ///< where there is no terminal

    struct Column {
        Column(const char* text, bool is_number = false) : title(text), number(is_number) {}
        std::string title;
        bool number;  ///< cells are set to the right and are never broken
    };

    explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

    /// A row with as many cells as there are columns. A cell of text may hold several lines.
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }

    /// The titles and rows, columns beside each other. Where they would pass `width`, the widest
    /// ones of text are narrowed and their cells go on in further lines, broken at blanks where
    /// there are any. Characters that would steer a terminal are shown as "?".
    std::string text(std::size_t width = kWidth) const;
    /// The same cells unbroken, comma-separated; quoted where they hold a comma, quote or line end.
    std::string csv() const;

    /// One of the two on standard output, as wide as the terminal that it goes to.
    void print(bool as_csv) const;
    /// For a table of any length, after each add(): prints the rows there are once they are many
    /// and forgets them. Columns keep the widths that the first of them needed.
    void print_full(bool as_csv);

private:
    std::vector<std::size_t> widths(std::size_t width) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
    std::vector<std::size_t> settled_;  // widths of what has been printed; empty: nothing has
};

/// Columns that a person sees of a line on standard output; Table::kWidth where nobody does.
std::size_t terminal_width();

/// The lines of `text` at most `width` characters (of UTF-8) wide, broken at blanks or, failing
/// that, after a "/" or anywhere. At least one line.
std::vector<std::string> wrapped(const std::string& text, std::size_t width);

}  // namespace halvern
