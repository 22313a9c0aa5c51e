#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "flow/flow_item_kind.h"
#include "platform/fault.h"

namespace halvern {

/// One section of a flow as an item gets it: a keyword line and the parameter lines that follow.
struct FlowSection {
    bool disabled = false;
    FlowItemKind kind{};
    std::string keyword;             ///< as matched, without "$"
    std::vector<std::string> lines;  ///< newline removed
    int line_number = 0;             ///< of the keyword line in its file, counted from 1
};
using FlowSections = std::list<FlowSection>;

/// Prospect of a line "$PROSPECT=NAME"; nothing for every other line.
std::optional<std::string> prospect_of_line(const std::string& line);

/// A flow file's text: the lines that a job reads, the sections they make, and changes in place,
/// which leave everything else as it is, comments and lines that no item knows above all. A line of
/// the file that is longer than 198 characters is read in pieces of 198, each a line of its own.
/// Indices of lines count from 0.
class FlowDocument {
public:
    static constexpr std::size_t kLongestLine = 198;

    struct Section {
        std::optional<FlowItemKind> kind;  ///< nothing: a keyword that there is not
        bool disabled = false;
        std::string word;       ///< after "$"
        std::size_t begin = 0;  ///< its keyword line
        std::size_t end = 0;    ///< one after its last line
    };

    explicit FlowDocument(const std::string& text = {});

    std::string text() const;
    std::size_t line_count() const { return lines_.size(); }
    const std::string& line(std::size_t index) const { return lines_[index].text; }
    /// Number of the line of the file that it is, or is a piece of, from 1.
    int number(std::size_t index) const { return lines_[index].number; }
    /// Whether the rest of a line that is too long comes as the next one.
    bool is_continued(std::size_t index) const;
    const std::vector<Section>& sections() const { return sections_; }

    /// Index of the section that "AGC" (the only one) or "AGC#2" (the second AGC) means.
    Result<std::size_t> find(const std::string& item) const;
    /// "AGC", or "AGC#2" where there are several.
    std::string item_name(std::size_t section) const;

    /// The section as its item gets it; only of a known kind. The lines of `site` that are for its
    /// kind come first, so that the flow's own override them.
    FlowSection flow_section(std::size_t section, const FlowSections& site = {}) const;

    void set_disabled(std::size_t section, bool disabled);
    /// Makes the section's lines of `key` hold one value: in the last of them, which is the one
    /// that counts, or in a new one after the section's parameters.
    void set(std::size_t section, const std::string& key, const std::string& value);
    /// Makes the section's lines of these keys exactly these lines, in their order.
    void set_rows(std::size_t section, const std::vector<std::string>& keys,
                  const std::vector<std::string>& lines);

    /// Puts a section's text in before the section of that index; at its number: after the last.
    void insert(std::size_t section, const std::string& text);
    /// Takes a section out, with the lines up to the next one, and gives them.
    std::string remove(std::size_t section);

private:
    struct Line {
        std::string text;  // without "\n", but with a "\r" before it
        bool ends = true;  // false: a piece, or the file's last line without a "\n"
        int number = 0;
    };

    static std::vector<Line> lines_of(const std::string& text);
    void find_sections();
    std::size_t after_parameters(const Section& section) const;
    std::size_t erase_line(std::size_t index);
    void insert_line(const Section& section, std::size_t place, const std::string& text);

    std::vector<Line> lines_;
    std::vector<Section> sections_;
};

/// The kind that a person means by its keyword or its name, in any case of letters; a fault, naming
/// the nearest one, when there is none.
Result<FlowItemKind> kind_named(const std::string& text);

/// The sections of every file in `directory`, in order of their names, that are not disabled: lines
/// that come before those of a flow's section of the same kind. None where there is no directory.
/// A fault names the file that cannot be read or has a keyword that there is not.
Result<FlowSections> read_site_defaults(const std::string& directory);

}  // namespace halvern
