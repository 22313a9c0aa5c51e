#include "cli/table.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "foundation/words.h"
#include "platform/terminal.h"

namespace halvern {

namespace {

constexpr std::size_t kGap = 2;  // blanks between columns
constexpr std::size_t kNarrowest = 6;
constexpr std::size_t kMany = 1000;  // rows that are kept to see how wide columns must be

std::size_t characters(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count) next_character(text);
    return count;
}

// Bytes of the first `count` characters.
std::size_t bytes_of(std::string_view text, std::size_t count) {
    std::string_view rest = text;
    while (!rest.empty() && count-- > 0) next_character(rest);
    return text.size() - rest.size();
}

std::vector<std::string_view> lines_of(std::string_view text) {
    std::vector<std::string_view> lines;
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos;) {
        lines.push_back(text.substr(0, end));
        text.remove_prefix(end + 1);
    }
    lines.push_back(text);
    return lines;
}

std::string csv_cell(const std::string& text) {
    const std::string cell = printable(text);
    if (cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char c : cell) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

std::size_t terminal_width() {
    constexpr int kNarrow = 20;
    const int columns = terminal_columns(stdout);
    return columns >= kNarrow ? static_cast<std::size_t>(columns) : Table::kWidth;
}

std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> result;
    width = std::max<std::size_t>(width, 1);
    for (std::string_view line : lines_of(text)) {
        while (characters(line) > width) {
            const std::size_t most = bytes_of(line, width);
            const std::size_t blank = line.rfind(' ', most);
            const std::size_t slash = line.rfind('/', most - 1);
            std::size_t cut = most;
            if (blank != std::string_view::npos && blank > 0) {
                cut = blank;
            } else if (slash != std::string_view::npos && slash > 0) {
                cut = slash + 1;
            }
            std::string_view part = line.substr(0, cut);
            line.remove_prefix(cut);
            while (line.starts_with(' ')) line.remove_prefix(1);
            while (part.ends_with(' ')) part.remove_suffix(1);
            result.emplace_back(part);
        }
        result.emplace_back(line);
    }
    return result;
}

std::vector<std::size_t> Table::widths(std::size_t width) const {
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        widths.push_back(characters(columns_[i].title));
        for (const auto& row : rows_) {
            for (const std::string_view line : lines_of(row[i])) {
                widths[i] = std::max(widths[i], characters(line));
            }
        }
    }
    std::size_t total = (widths.size() - 1) * kGap;
    for (const std::size_t w : widths) total += w;
    for (; total > width; --total) {
        std::size_t* widest = nullptr;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            if (!columns_[i].number && (!widest || widths[i] > *widest)) widest = &widths[i];
        }
        if (!widest || *widest <= kNarrowest) break;
        --*widest;
    }
    return widths;
}

std::string Table::text(std::size_t width) const {
    const std::vector<std::size_t> wide = settled_.empty() ? widths(width) : settled_;
    std::string text;
    const auto append = [&](const auto& cell_of) {
        std::vector<std::vector<std::string>> cells;
        std::size_t height = 1;
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            const std::string cell = printable(cell_of(i));
            const bool broken = !columns_[i].number;
            cells.push_back(broken ? wrapped(cell, wide[i]) : std::vector{cell});
            height = std::max(height, cells.back().size());
        }
        for (std::size_t k = 0; k < height; ++k) {
            std::string line;
            std::size_t column = 0;  // characters that should come before the next cell
            std::size_t there = 0;   // that do
            for (std::size_t i = 0; i < cells.size(); ++i) {
                const std::string cell = k < cells[i].size() ? cells[i][k] : "";
                const std::size_t length = characters(cell);
                const std::size_t before =
                    columns_[i].number && length < wide[i] ? wide[i] - length : 0;
                if (length > 0) {
                    // A number that is wider than those before it pushes the rest of its row.
                    const std::size_t place = std::max(column, there + (i > 0 ? kGap : 0)) + before;
                    line.append(place - there, ' ');
                    line += cell;
                    there = place + length;
                }
                column += wide[i] + kGap;
            }
            text += line + "\n";
        }
    };
    if (settled_.empty()) append([&](std::size_t i) { return columns_[i].title; });
    for (const auto& row : rows_) append([&](std::size_t i) { return row[i]; });
    return text;
}

std::string Table::csv() const {
    std::string text;
    const auto append = [&](const auto& cell_of) {
        for (std::size_t i = 0; i < columns_.size(); ++i) {
            if (i > 0) text += ',';
            text += csv_cell(cell_of(i));
        }
        text += '\n';
    };
    if (settled_.empty()) append([&](std::size_t i) { return columns_[i].title; });
    for (const auto& row : rows_) append([&](std::size_t i) { return row[i]; });
    return text;
}

void Table::print(bool as_csv) const {
    const std::string all = as_csv ? csv() : text(terminal_width());
    std::fwrite(all.data(), 1, all.size(), stdout);
}

void Table::print_full(bool as_csv) {
    if (rows_.size() < kMany) return;
    print(as_csv);
    if (settled_.empty()) settled_ = widths(terminal_width());
    rows_.clear();
}

}  // namespace halvern
