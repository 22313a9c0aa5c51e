#include "items/number_sheet.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

namespace halvern {

namespace {

std::string_view trimmed(std::string_view cell) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = cell.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return cell.substr(first, cell.find_last_not_of(kBlanks) - first + 1);
}

std::optional<double> number_of(std::string_view cell, bool whole) {
    if (cell.size() > 1 && cell[0] == '+' && cell[1] != '-') cell.remove_prefix(1);
    const char* const end = cell.data() + cell.size();
    double number = 0;
    if (whole) {
        int integer = 0;
        const auto result = std::from_chars(cell.data(), end, integer);
        if (result.ec != std::errc{} || result.ptr != end) return {};
        number = integer;
    } else {
        const auto result = std::from_chars(cell.data(), end, number);
        if (result.ec != std::errc{} || result.ptr != end || !std::isfinite(number)) return {};
    }
    return number;
}

}  // namespace

std::vector<const char*> NumberSheet::titles() const {
    std::vector<const char*> titles;
    for (const Column& column : columns) titles.push_back(column.title);
    return titles;
}

std::string NumberSheet::read(const Cells& cells, std::vector<std::vector<double>>& rows) const {
    rows.clear();
    for (std::size_t r = 0; r < cells.size(); ++r) {
        const auto cell = [&](std::size_t column) {
            return column < cells[r].size() ? trimmed(cells[r][column]) : std::string_view();
        };
        const std::string row = std::string(entry) + " Pair #" + std::to_string(r + 1) + " has ";
        std::size_t filled = 0;
        for (std::size_t c = 0; c < columns.size(); ++c) filled += !cell(c).empty();
        if (filled == 0) continue;
        if (filled < columns.size()) {
            std::string text = row + "at least one empty field and one non-empty field.";
            const char* separator = "\n";
            for (const std::size_t c : quoted) {
                text +=
                    separator + std::string(columns[c].label) + " = '" + std::string(cell(c)) + "'";
                separator = ", ";
            }
            return text;
        }
        std::vector<double> numbers(columns.size());
        for (const std::size_t c : checked) {
            const std::optional<double> number = number_of(cell(c), columns[c].whole);
            if (!number) {
                const std::string field = columns[c].field;
                return row + "a bad number in the " + field + " field.\n" + field + " = '" +
                       std::string(cell(c)) + "'.  Fix before accepting spreadsheet.";
            }
            numbers[c] = *number;
        }
        rows.push_back(std::move(numbers));
    }
    return {};
}

std::string one_decimal(double number) {
    const int length = std::snprintf(nullptr, 0, "%3.1f", number);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, "%3.1f", number);
    return text;
}

}  // namespace halvern
