#include "cli/table.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace halvern {

namespace {

constexpr std::size_t kGap = 2;  // blanks between columns
constexpr std::size_t kNarrowest = 6;

bool continues_character(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char c) { return !continues_character(c); }));
}

// Bytes of the first `count` characters.
std::size_t bytes_of(std::string_view text, std::size_t count) {
    std::size_t at = 0;
    for (; at < text.size(); ++at) {
        if (!continues_character(text[at]) && count-- == 0) break;
    }
    return at;
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

std::string csv_cell(const std::string& cell) {
    if (cell.find_first_of(",\"\r\n") == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char c : cell) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> result;
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

std::string Table::text(std::size_t width) const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            for (const std::string_view line : lines_of(row[i])) {
                widths[i] = std::max(widths[i], characters(line));
            }
        }
    }
    const auto total = [&] {
        std::size_t sum = (widths.size() - 1) * kGap;
        for (const std::size_t w : widths) sum += w;
        return sum;
    };
    while (total() > width) {
        const auto widest = std::ranges::max_element(widths);
        if (*widest <= kNarrowest) break;
        --*widest;
    }

    std::string text;
    for (const auto& row : rows_) {
        std::vector<std::vector<std::string>> cells;
        std::size_t height = 1;
        for (std::size_t i = 0; i < row.size(); ++i) {
            cells.push_back(wrapped(row[i], widths[i]));
            height = std::max(height, cells.back().size());
        }
        for (std::size_t k = 0; k < height; ++k) {
            std::string line;
            std::size_t column = 0;  // characters that should stand before the next cell
            for (std::size_t i = 0; i < cells.size(); ++i) {
                if (k < cells[i].size() && !cells[i][k].empty()) {
                    line.append(column - characters(line), ' ');
                    line += cells[i][k];
                }
                column += widths[i] + kGap;
            }
            text += line + "\n";
        }
    }
    return text;
}

std::string Table::csv() const {
    std::string text;
    for (const auto& row : rows_) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i > 0) text += ',';
            text += csv_cell(row[i]);
        }
        text += '\n';
    }
    return text;
}

void Table::print(bool as_csv) const { std::fputs((as_csv ? csv() : text()).c_str(), stdout); }

std::string grouped(long long number) {
    std::string digits = std::to_string(number);
    const std::size_t sign = number < 0 ? 1 : 0;
    for (std::size_t at = digits.size(); at > sign + 3;) digits.insert(at -= 3, 1, ',');
    return digits;
}

std::string counted(long long number, const std::string& thing) {
    return grouped(number) + " " + thing + (number == 1 ? "" : "s");
}

}  // namespace halvern
