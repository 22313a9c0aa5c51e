#include "flow/row_table.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "foundation/words.h"
#include "platform/text_file.h"

namespace halvern {

namespace {

std::string_view trimmed(std::string_view cell) {
    constexpr std::string_view kBlanks = " \t\r\n";
    const std::size_t first = cell.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return cell.substr(first, cell.find_last_not_of(kBlanks) - first + 1);
}

/// Takes the value of `cell`'s type from the front of `text`; false where there is none.
bool take(std::string_view& text, Cell& cell) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    const auto number = [&](auto& value) {
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc{}) return false;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        return true;
    };
    if (auto* whole = std::get_if<int>(&cell)) return number(*whole);
    return number(std::get<double>(cell));
}

/// With one decimal, as a cell and a flow file line have it.
std::string one_decimal(double number) {
    const int length = std::snprintf(nullptr, 0, "%3.1f", number);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, "%3.1f", number);
    return text;
}

std::string text_of(const Cell& cell) {
    if (const auto* text = std::get_if<std::string>(&cell)) return *text;
    const auto* whole = std::get_if<int>(&cell);
    return whole ? std::to_string(*whole) : one_decimal(std::get<double>(cell));
}

std::string changed(std::string text, int (*change)(int)) {
    std::ranges::transform(text, text.begin(),
                           [change](unsigned char c) { return static_cast<char>(change(c)); });
    return text;
}

}  // namespace

bool CellTable::parse(std::string_view line, Row& row) const {
    row = kinds_;
    for (std::size_t i = 0; i < row.size(); ++i) {
        const bool last = i + 1 == row.size();
        if (auto* text = std::get_if<std::string>(&row[i])) {
            const std::size_t end = last ? line.size() : std::min(line.find(','), line.size());
            *text = trimmed(line.substr(0, end));
            line.remove_prefix(end);
        } else if (!take(line, row[i])) {
            return false;
        }
        if (last) return true;
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(',')) return false;
        line.remove_prefix(1);
    }
    return true;
}

std::string CellTable::line_of(const Row& row) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) line += (i == 0 ? "" : ",") + text_of(row[i]);
    return line;
}

std::string CellTable::doubt(std::string_view line) const {
    Row row;
    if (!parse(line, row)) return {};
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (std::holds_alternative<std::string>(row[i])) continue;
        const auto* whole = std::get_if<int>(&row[i]);
        const double size = std::fabs(whole ? *whole : std::get<double>(row[i]));
        if (size == 0 || (size >= columns_[i].least && size <= columns_[i].most)) continue;
        return "gives " + text_of(row[i]) + " for the " + changed(columns_[i].label, std::tolower) +
               "; a row is " + line_form();
    }
    return {};
}

std::string CellTable::line_form() const {
    std::string form;
    for (const TableColumn& column : columns_) {
        const std::string unit = column.unit;
        form += (form.empty() ? "<" : ",<") + changed(column.label, std::tolower) +
                (unit.empty() ? "" : ", " + unit) + ">";
    }
    return form;
}

std::vector<const char*> CellTable::titles() const {
    std::vector<const char*> titles;
    for (const std::size_t column : words_.window) titles.push_back(columns_[column].title);
    return titles;
}

std::vector<std::string> CellTable::sheet_row(const Row& row) const {
    std::vector<std::string> cells;
    for (const std::size_t column : words_.window) cells.push_back(text_of(row[column]));
    return cells;
}

std::string CellTable::read_sheet(const Sheet& sheet, std::vector<Row>& rows) const {
    rows.clear();
    for (std::size_t r = 0; r < sheet.size(); ++r) {
        std::vector<std::string_view> cells(columns_.size());  // in the file's order
        for (std::size_t i = 0; i < std::min(sheet[r].size(), words_.window.size()); ++i) {
            cells[words_.window[i]] = trimmed(sheet[r][i]);
        }
        const auto empty = std::ranges::count(cells, std::string_view());
        if (empty == std::ssize(cells)) continue;
        const std::string row = std::string(words_.entry) + " Pair #" + std::to_string(r + 1);
        if (empty > 0) {
            std::string text = row + " has at least one empty field and one non-empty field.";
            const char* separator = "\n";
            for (const std::size_t c : words_.quoted) {
                text += separator + std::string(columns_[c].label) + " = '" +
                        std::string(cells[c]) + "'";
                separator = ", ";
            }
            return text;
        }
        Row values = kinds_;
        for (const std::size_t c : words_.checked) {
            if (auto* text = std::get_if<std::string>(&values[c])) {
                *text = cells[c];
                continue;
            }
            std::string_view left = cells[c];
            const bool read = take(left, values[c]) && left.empty();
            const auto* real = std::get_if<double>(&values[c]);
            if (read && (!real || std::isfinite(*real))) continue;
            const std::string field = changed(columns_[c].label, std::toupper);
            return row + " has a bad number in the " + field + " field.\n" + field + " = '" +
                   std::string(cells[c]) + "'.  Fix before accepting spreadsheet.";
        }
        rows.push_back(std::move(values));
    }
    return {};
}

std::vector<std::size_t> CellTable::read_headings(std::string_view line) const {
    std::vector<std::size_t> order;
    while (!line.empty()) {
        const std::string_view word = next_field(line);
        if (word.empty()) break;
        std::size_t column = 0;
        for (; column < columns_.size(); ++column) {
            const TableColumn& each = columns_[column];
            const std::string heading =
                each.heading ? each.heading : changed(each.label, std::toupper);
            if (changed(std::string(word), std::toupper) == heading) break;
        }
        if (column == columns_.size() || std::ranges::find(order, column) != order.end()) return {};
        order.push_back(column);
    }
    return order;
}

bool CellTable::read_values(std::string_view line, std::span<const std::size_t> order,
                            Row& row) const {
    row = kinds_;
    for (const std::size_t column : order) {
        std::string_view field = next_field(line);
        if (field.empty()) return false;
        if (auto* text = std::get_if<std::string>(&row[column])) {
            *text = field;
        } else if (!take(field, row[column]) || !field.empty()) {
            return false;
        }
    }
    return next_field(line).empty();
}

Fault CellTable::read_file(const std::string& path, std::vector<Row>& rows) const {
    constexpr std::int64_t kMostBytes = std::int64_t{1} << 28;
    const Result<std::string> file = read_text_file(path, kMostBytes);
    if (!file) return file.fault();
    const std::string key = std::string(words_.key) + "=";
    std::vector<std::size_t> order;  // of the columns; empty before a line of headings
    int number = 0;
    for (std::string_view rest = *file; !rest.empty();) {
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        line = trimmed(line);
        ++number;
        if (line.empty() || line.front() == '#') continue;
        if (std::isalpha(static_cast<unsigned char>(line.front())) != 0 && !line.starts_with(key)) {
            order = read_headings(line);
            if (!order.empty()) continue;
        }
        Row row;
        if (line.starts_with(key)) line.remove_prefix(key.size());
        if (order.empty() ? !parse(line, row) : !read_values(line, order, row)) {
            return Fault("line " + std::to_string(number) + " is no " + words_.row);
        }
        rows.push_back(std::move(row));
    }
    return {};
}

}  // namespace halvern
