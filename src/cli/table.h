#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace halvern {

/// Rows of text under titles, as a person reads them or as CSV.
class Table {
public:
    static constexpr std::size_t kWidth = 80;

    explicit Table(std::vector<std::string> titles) : rows_{std::move(titles)} {}

    /// A row with as many cells as there are titles. A cell may hold several lines.
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.size() == 1; }

    /// Columns beside each other. Where they would pass `width`, the widest ones are narrowed and
    /// their cells go on in further lines, broken at blanks where there are any.
    std::string text(std::size_t width = kWidth) const;
    /// The same cells unbroken, comma-separated; quoted where they hold a comma, quote or line end.
    std::string csv() const;

    /// One of the two on standard output.
    void print(bool as_csv) const;

private:
    std::vector<std::vector<std::string>> rows_;  // the titles first
};

/// The lines of `text` at most `width` characters (of UTF-8) wide, broken at blanks or, failing
/// that, behind a "/" or anywhere. At least one line.
std::vector<std::string> wrapped(const std::string& text, std::size_t width);

/// "12,000".
std::string grouped(long long number);
/// "1 error", "2 errors".
std::string counted(long long number, const std::string& thing);

}  // namespace halvern
