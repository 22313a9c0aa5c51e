#include "desk/flow_text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <numeric>

#include "desk/command_error.h"
#include "desk/workplace.h"
#include "foundation/key_readers.h"
#include "platform/text_file.h"

namespace halvern {

namespace {

constexpr std::size_t kPiece = 198;  // characters that a job reads at a time

// "KEY=…" of a parameter, with "KEY" in capitals, digits and "_".
bool is_assignment(const std::string& line) {
    const std::size_t equals = line.find('=');
    return equals != std::string::npos && equals > 0 &&
           std::all_of(
               line.begin(), line.begin() + static_cast<std::ptrdiff_t>(equals),
               [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; });
}

std::size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string upper(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    return text;
}

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
    constexpr std::size_t kLongest = 100;
    if (word.size() > kLongest) return {};
    std::string found;
    std::size_t least = word.size() / 3 + 1;  // more is another word
    for (const std::string& candidate : candidates) {
        const std::size_t distance = edit_distance(upper(word), upper(candidate));
        if (distance > least || (distance == least && !found.empty())) continue;
        least = distance;
        found = candidate;
    }
    return found;
}

FlowItemKind kind_named(const std::string& text) {
    const std::string wanted = upper(text.starts_with('$') ? text.substr(1) : text);
    std::vector<std::string> keywords;
    for (const FlowItemKindEntry& entry : flow_item_kinds()) {
        if (wanted == entry.keyword || wanted == upper(entry.name)) return entry.kind;
        keywords.emplace_back(entry.keyword);
    }
    const std::string near = nearest(wanted, keywords);
    throw CommandError("there is no flow item '" + text + "'" +
                       (near.empty() ? "; " : "; did you mean " + near + "? ") +
                       "'halvern flow items' lists them");
}

std::vector<std::string> pieces_as_read(const std::string& line) {
    std::vector<std::string> pieces;
    for (std::size_t at = 0; at == 0 || at < line.size(); at += kPiece) {
        pieces.push_back(line.substr(at, kPiece));
    }
    return pieces;
}

FlowText::FlowText(const std::string& text) {
    std::size_t begin = 0;
    for (std::size_t end; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
        lines_.push_back(text.substr(begin, end - begin));
    }
    if (begin < text.size()) {
        lines_.push_back(text.substr(begin));
        last_line_ends_ = false;
    }
    find_sections();
}

FlowText FlowText::read(const std::string& path) {
    const auto text = file_text(path);
    if (!text) {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(path, unknown);
        if (!unknown && size > std::uintmax_t{kMostTextBytes}) {
            throw CommandError("'" + path + "' is too large to be a flow");
        }
        if (!unknown) throw CommandError("cannot read '" + path + "'; check its permissions");
        throw CommandError("there is no flow '" + path +
                           "'; 'halvern flow list' names those there are, 'halvern flow new' "
                           "makes one");
    }
    return FlowText(*text);
}

std::string FlowText::text() const {
    std::string text;
    for (const std::string& line : lines_) {
        text += line;
        text += '\n';
    }
    if (!last_line_ends_ && !text.empty()) text.pop_back();
    return text;
}

void FlowText::find_sections() {
    sections_.clear();
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        const std::string& line = lines_[i];
        if (!line.starts_with('$') || line.starts_with("$PROSPECT=")) continue;
        if (!sections_.empty()) sections_.back().end = i;
        Section section{.disabled = line.starts_with("$$"), .begin = i, .end = lines_.size()};
        section.word = line.substr(section.disabled ? 2 : 1);
        if (section.word.ends_with('\r')) section.word.pop_back();
        section.kind = match_keyword(section.word);
        sections_.push_back(std::move(section));
    }
}

std::size_t FlowText::find(const std::string& item) const {
    const std::size_t mark = item.find('#');
    const FlowItemKind kind = kind_named(item.substr(0, mark));
    const std::string keyword = flow_item_kind(kind).keyword;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (sections_[i].kind == kind) found.push_back(i);
    }
    if (found.empty()) throw CommandError("the flow has no item " + keyword);
    const std::string several = "the flow has " + std::to_string(found.size()) + " items " +
                                keyword + ", " + keyword + "#1 to " + keyword + "#" +
                                std::to_string(found.size());
    if (mark == std::string::npos) {
        if (found.size() > 1) throw CommandError(several + "; say which one");
        return found.front();
    }
    const std::string digits = item.substr(mark + 1);
    std::size_t number = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (end.ec != std::errc{} || end.ptr != digits.data() + digits.size() || number < 1 ||
        number > found.size()) {
        throw CommandError(found.size() > 1 ? several
                                            : "the flow has one item " + keyword + ", no " + item);
    }
    return found[number - 1];
}

std::string FlowText::item_name(std::size_t section) const {
    const Section& wanted = sections_[section];
    std::string name = wanted.kind ? flow_item_kind(*wanted.kind).keyword : wanted.word;
    if (!wanted.kind) return name;
    int number = 0;
    int count = 0;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (sections_[i].kind != wanted.kind) continue;
        ++count;
        if (i <= section) ++number;
    }
    if (count > 1) name += "#" + std::to_string(number);
    return name;
}

FlowSection FlowText::flow_section(std::size_t section) const {
    const Section& from = sections_[section];
    FlowSection result{.disabled = from.disabled,
                       .kind = *from.kind,
                       .keyword = flow_item_kind(*from.kind).keyword,
                       .lines = {},
                       .line_number = static_cast<int>(from.begin) + 1};
    for (std::size_t i = from.begin + 1; i < from.end; ++i) {
        for (std::string& piece : pieces_as_read(lines_[i])) {
            result.lines.push_back(std::move(piece));
        }
    }
    return result;
}

void FlowText::set_disabled(std::size_t section, bool disabled) {
    std::string& line = lines_[sections_[section].begin];
    if (sections_[section].disabled == disabled) return;
    if (disabled) {
        line.insert(0, 1, '$');
    } else {
        line.erase(0, 1);
    }
    find_sections();
}

std::size_t FlowText::new_line_place(const Section& section) const {
    for (std::size_t i = section.end; i-- > section.begin + 1;) {
        if (is_assignment(lines_[i])) return i + 1;
    }
    return section.begin + 1;
}

std::string FlowText::new_line(const Section& section, const std::string& text) const {
    return lines_[section.begin].ends_with('\r') ? text + '\r' : text;
}

void FlowText::set(std::size_t section, const std::string& key, const std::string& value) {
    const Section& at = sections_[section];
    const std::string start = key + "=";
    for (std::size_t i = at.end; i-- > at.begin + 1;) {
        if (!lines_[i].starts_with(start)) continue;
        std::string old;
        (void)ReadKey(lines_[i].c_str(), start.c_str(), old);
        if (old != value) lines_[i] = new_line(at, start + value);
        return;
    }
    const std::size_t place = new_line_place(at);
    if (place == lines_.size()) last_line_ends_ = true;
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place), new_line(at, start + value));
    find_sections();
}

void FlowText::set_rows(std::size_t section, const std::string& key,
                        const std::vector<std::string>& values) {
    const Section at = sections_[section];
    std::size_t place = new_line_place(at);
    for (std::size_t i = at.end; i-- > at.begin + 1;) {  // from behind: indices before stay
        if (!lines_[i].starts_with(key + "=")) continue;
        lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i));
        place = i;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place + i),
                      new_line(at, key + "=" + values[i]));
    }
    if (place + values.size() == lines_.size()) last_line_ends_ = true;
    find_sections();
}

}  // namespace halvern
