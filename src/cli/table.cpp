#include "cli/table.h"

#include <algorithm>

namespace halvern {

namespace {

constexpr std::size_t kRowsKept = 1000;
constexpr std::size_t kTerminal = 80;  // characters of a line

std::string quoted(const std::string& cell) {
    if (cell.find_first_of(",\"\n\r") == std::string::npos) return cell;
    std::string text = "\"";
    for (const char c : cell) text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + '"';
}

/// Characters, not bytes: the bytes behind a character's first are 10xxxxxx.
std::size_t width_of(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

Table::Table(std::FILE* out, bool csv, std::vector<Column> columns)
    : out_(out), csv_(csv), columns_(std::move(columns)) {
    for (const Column& column : columns_) {
        if (kept_.empty()) kept_.emplace_back();
        kept_.front().push_back(column.title);
    }
}

void Table::add(std::vector<std::string> cells) {
    cells.resize(columns_.size());
    if (!widths_.empty()) return print(cells);
    kept_.push_back(std::move(cells));
    if (kept_.size() > kRowsKept) flush();
}

void Table::flush() {
    if (!widths_.empty() || columns_.empty()) return;
    widths_.resize(columns_.size());
    for (const auto& row : kept_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths_[i] = std::max(widths_[i], width_of(row[i]));
        }
    }
    for (const auto& row : kept_) print(row);
    kept_.clear();
}

void Table::print(const std::vector<std::string>& cells) const {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (csv_) {
            line += (i > 0 ? "," : "") + quoted(cells[i]);
            continue;
        }
        if (i > 0) line += "  ";
        const std::size_t width = width_of(cells[i]);
        const std::string blanks(widths_[i] - std::min(width, widths_[i]), ' ');
        line += columns_[i].text ? cells[i] + blanks : blanks + cells[i];
    }
    // Words that end a line are left out where they do not fit; numbers never are.
    while (!csv_ && columns_.back().text && width_of(line) > kTerminal) {
        const std::size_t blank = line.find_last_of(' ', line.find_last_not_of(' '));
        if (blank == std::string::npos || line.size() - blank > cells.back().size()) break;
        line.resize(blank);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    std::fprintf(out_, "%s\n", line.c_str());
}

}  // namespace halvern
