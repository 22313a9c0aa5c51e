#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "flow/flow_file.h"

namespace halvern {

/// A flow file's text, edited where it stands: what is not changed, comments and lines that no item
/// knows above all, stays as it is. Indices of lines count from 0, numbers that people see from 1.
class FlowText {
public:
    struct Section {
        std::optional<FlowItemKind> kind;  ///< nothing: a keyword that there is not
        bool disabled = false;
        std::string word;       ///< behind "$"
        std::size_t begin = 0;  ///< its keyword line
        std::size_t end = 0;    ///< behind its last line
    };

    explicit FlowText(const std::string& text);
    /// CommandError when the file cannot be read.
    static FlowText read(const std::string& path);

    std::string text() const;
    const std::vector<std::string>& lines() const { return lines_; }
    const std::vector<Section>& sections() const { return sections_; }

    /// Index of the section that "AGC" (the only one) or "AGC#2" (the second AGC) means.
    /// CommandError when there is none, or several.
    std::size_t find(const std::string& item) const;
    /// "AGC", or "AGC#2" where there are several.
    std::string item_name(std::size_t section) const;

    /// The section as a job reads it; only of a known kind.
    FlowSection flow_section(std::size_t section) const;

    void set_disabled(std::size_t section, bool disabled);
    /// Makes the section's lines of `key` hold one value: in the last of them, which is the one
    /// that counts, or in a new one behind the section's parameters.
    void set(std::size_t section, const std::string& key, const std::string& value);
    /// Makes the section's lines of `key` exactly these values, in their order.
    void set_rows(std::size_t section, const std::string& key,
                  const std::vector<std::string>& values);

private:
    void find_sections();
    std::size_t new_line_place(const Section& section) const;
    std::string new_line(const Section& section, const std::string& text) const;

    std::vector<std::string> lines_;  // without "\n", but with "\r" where it stands before
    bool last_line_ends_ = true;
    std::vector<Section> sections_;
};

/// The kind that a person means by its keyword or its name, in any case of letters. CommandError,
/// naming the nearest one, when there is none.
FlowItemKind kind_named(const std::string& text);

/// The candidate that differs least from `word`, when it is near; else an empty text.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

/// The lines that a job reads from one line of a file: pieces of 198 characters.
std::vector<std::string> pieces_as_read(const std::string& line);

/// In capitals; ASCII only.
std::string upper(std::string text);

}  // namespace halvern
