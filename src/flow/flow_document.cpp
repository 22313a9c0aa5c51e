#include "flow/flow_document.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "foundation/key_readers.h"
#include "foundation/words.h"
#include "platform/text_file.h"

namespace halvern {

namespace {

// "KEY=…" of a parameter, with "KEY" in capitals, digits and "_".
bool is_assignment(const std::string& line) {
    const std::size_t equals = line.find('=');
    return equals != std::string::npos && equals > 0 &&
           std::all_of(
               line.begin(), line.begin() + static_cast<std::ptrdiff_t>(equals),
               [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_'; });
}

}  // namespace

std::optional<std::string> prospect_of_line(const std::string& line) {
    std::string name;
    if (!ReadKey(line.c_str(), "$PROSPECT=", name)) return {};
    return name;
}

FlowDocument::FlowDocument(const std::string& text) : lines_(lines_of(text)) { find_sections(); }

// A line of 198 characters is one piece, and its line end makes an empty one of its own.
std::vector<FlowDocument::Line> FlowDocument::lines_of(const std::string& text) {
    std::vector<Line> lines;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = text.find('\n', at);
        const bool ends = end != std::string::npos && end - at < kLongestLine;
        const std::size_t length = ends ? end - at : std::min(kLongestLine, text.size() - at);
        lines.push_back({.text = text.substr(at, length), .ends = ends});
        at += length + (ends ? 1 : 0);
    }
    return lines;
}

std::string FlowDocument::text() const {
    std::string text;
    for (const Line& line : lines_) {
        text += line.text;
        if (line.ends) text += '\n';
    }
    return text;
}

bool FlowDocument::is_continued(std::size_t index) const {
    return !lines_[index].ends && index + 1 < lines_.size() && !lines_[index + 1].text.empty();
}

void FlowDocument::find_sections() {
    sections_.clear();
    int number = 1;
    for (std::size_t i = 0; i < lines_.size(); ++i) {
        lines_[i].number = number;
        if (lines_[i].ends) ++number;
        const std::string& line = lines_[i].text;
        if (!line.starts_with('$') || prospect_of_line(line)) continue;
        if (!sections_.empty()) sections_.back().end = i;
        Section section{.disabled = line.starts_with("$$"), .begin = i, .end = lines_.size()};
        section.word = line.substr(section.disabled ? 2 : 1);
        section.kind = match_keyword(section.word);
        if (section.word.ends_with('\r')) section.word.pop_back();
        sections_.push_back(std::move(section));
    }
}

Result<std::size_t> FlowDocument::find(const std::string& item) const {
    const std::size_t mark = item.find('#');
    const Result<FlowItemKind> kind = kind_named(item.substr(0, mark));
    if (!kind) return kind.fault();
    const std::string keyword = flow_item_kind(*kind).keyword;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        if (sections_[i].kind == *kind) found.push_back(i);
    }
    if (found.empty()) return Fault("the flow has no item " + keyword);
    const std::string count = std::to_string(found.size());
    const std::string several = "the flow has " + count + " items " + keyword + ", " + keyword +
                                "#1 to " + keyword + "#" + count;
    if (mark == std::string::npos) {
        if (found.size() > 1) return Fault(several + "; say which one");
        return found.front();
    }
    const std::string digits = item.substr(mark + 1);
    std::size_t number = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (end.ec != std::errc{} || end.ptr != digits.data() + digits.size() || number < 1 ||
        number > found.size()) {
        return Fault(found.size() > 1 ? several
                                      : "the flow has one item " + keyword + ", no " + item);
    }
    return found[number - 1];
}

std::string FlowDocument::item_name(std::size_t section) const {
    const Section& wanted = sections_[section];
    if (!wanted.kind) return wanted.word;
    const auto same = [&](const Section& other) { return other.kind == wanted.kind; };
    const auto begin = sections_.begin();
    const auto at = begin + static_cast<std::ptrdiff_t>(section) + 1;
    std::string name = flow_item_kind(*wanted.kind).keyword;
    if (std::count_if(begin, sections_.end(), same) > 1) {
        name += "#" + std::to_string(std::count_if(begin, at, same));
    }
    return name;
}

FlowSection FlowDocument::flow_section(std::size_t section, const FlowSections& site) const {
    const Section& from = sections_[section];
    FlowSection result{.disabled = from.disabled,
                       .kind = *from.kind,
                       .keyword = flow_item_kind(*from.kind).keyword,
                       .lines = {},
                       .line_number = lines_[from.begin].number};
    for (const FlowSection& defaults : site) {
        if (defaults.kind != result.kind) continue;
        result.lines.insert(result.lines.end(), defaults.lines.begin(), defaults.lines.end());
    }
    for (std::size_t i = from.begin + 1; i < from.end; ++i) {
        if (!prospect_of_line(lines_[i].text)) result.lines.push_back(lines_[i].text);
    }
    return result;
}

void FlowDocument::set_disabled(std::size_t section, bool disabled) {
    std::string& line = lines_[sections_[section].begin].text;
    if (sections_[section].disabled == disabled) return;
    if (disabled) {
        line.insert(0, 1, '$');
    } else {
        line.erase(0, 1);
    }
    find_sections();
}

std::size_t FlowDocument::after_parameters(const Section& section) const {
    for (std::size_t i = section.end; i-- > section.begin + 1;) {
        if (!is_assignment(lines_[i].text)) continue;
        while (!lines_[i].ends && i + 1 < section.end) ++i;  // the pieces of a long line
        return i + 1;
    }
    return section.begin + 1;
}

// With the pieces that follow it; gives how many lines went.
std::size_t FlowDocument::erase_line(std::size_t index) {
    std::size_t end = index;
    while (end < lines_.size() && !lines_[end].ends) ++end;
    end = std::min(end + 1, lines_.size());
    lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(index),
                 lines_.begin() + static_cast<std::ptrdiff_t>(end));
    return end - index;
}

void FlowDocument::insert_line(const Section& section, std::size_t place, const std::string& text) {
    if (place > 0) lines_[place - 1].ends = true;  // the file's last line may lack its end
    std::vector<Line> lines =
        lines_of(text + (lines_[section.begin].text.ends_with('\r') ? "\r\n" : "\n"));
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place), lines.begin(), lines.end());
}

void FlowDocument::set(std::size_t section, const std::string& key, const std::string& value) {
    const Section at = sections_[section];
    const std::string start = key + "=";
    std::size_t place = after_parameters(at);
    for (std::size_t i = at.end; i-- > at.begin + 1;) {
        if (!lines_[i].text.starts_with(start)) continue;
        std::string old;
        (void)ReadKey(lines_[i].text.c_str(), start.c_str(), old);
        if (old == value) return;
        const bool last_end = lines_.back().ends;
        erase_line(i);
        insert_line(at, i, start + value);
        lines_.back().ends = last_end;
        return find_sections();
    }
    insert_line(at, place, start + value);
    find_sections();
}

void FlowDocument::set_rows(std::size_t section, const std::vector<std::string>& keys,
                            const std::vector<std::string>& lines) {
    const Section at = sections_[section];
    const auto belongs = [&keys](const std::string& line) {
        return std::ranges::any_of(
            keys, [&line](const std::string& key) { return line.starts_with(key + "="); });
    };
    std::size_t place = after_parameters(at);
    for (std::size_t i = at.end; i-- > at.begin + 1;) {  // backwards: indices before stay
        if (!belongs(lines_[i].text)) continue;
        erase_line(i);
        place = i;
    }
    for (std::size_t i = lines.size(); i-- > 0;) insert_line(at, place, lines[i]);
    find_sections();
}

void FlowDocument::insert(std::size_t section, const std::string& text) {
    const std::size_t place = section < sections_.size() ? sections_[section].begin : lines_.size();
    if (place > 0) lines_[place - 1].ends = true;
    std::vector<Line> lines = lines_of(text);
    if (!lines.empty()) lines.back().ends = true;
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(place), lines.begin(), lines.end());
    find_sections();
}

std::string FlowDocument::remove(std::size_t section) {
    const auto begin = lines_.begin() + static_cast<std::ptrdiff_t>(sections_[section].begin);
    const auto end = lines_.begin() + static_cast<std::ptrdiff_t>(sections_[section].end);
    FlowDocument taken;
    taken.lines_.assign(begin, end);
    lines_.erase(begin, end);
    find_sections();
    return taken.text();
}

Result<FlowItemKind> kind_named(const std::string& text) {
    const std::string wanted = upper(text.starts_with('$') ? text.substr(1) : text);
    std::vector<std::string> keywords;
    for (const FlowItemKindEntry& entry : flow_item_kinds()) {
        if (wanted == entry.keyword || wanted == upper(entry.name)) return entry.kind;
        keywords.emplace_back(entry.keyword);
    }
    const std::string near = nearest(wanted, keywords);
    return Fault("there is no flow item '" + text + "'" +
                 (near.empty() ? "; " : "; did you mean " + near + "? ") +
                 "'halvern flow items' lists them");
}

Result<FlowSections> read_site_defaults(const std::string& directory) {
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    std::error_code missing;
    fs::directory_iterator entry(directory, missing);
    for (; !missing && entry != fs::directory_iterator{}; entry.increment(missing)) {
        std::error_code unknown;
        if (entry->is_regular_file(unknown)) files.push_back(entry->path().filename().string());
    }
    std::ranges::sort(files);
    FlowSections sections;
    for (const std::string& name : files) {
        const std::string path = directory + "/" + name;
        const Result<std::string> text = read_text_file(path);
        if (!text) return Fault("'" + path + "' cannot be read: " + text.fault().reason());
        const FlowDocument document(*text);
        for (std::size_t i = 0; i < document.sections().size(); ++i) {
            const FlowDocument::Section& section = document.sections()[i];
            if (!section.kind) return Fault("'" + path + "' has no keyword '" + section.word + "'");
            if (!section.disabled) sections.push_back(document.flow_section(i));
        }
    }
    return sections;
}

}  // namespace halvern
