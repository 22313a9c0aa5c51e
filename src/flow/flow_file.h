#pragma once

#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "flow/flow_item_kind.h"

namespace halvern {

/// One section of a flow file: a keyword line and the parameter lines that follow it.
struct FlowSection {
    bool disabled = false;
    FlowItemKind kind{};
    std::string keyword;             ///< as matched, without "$"
    std::vector<std::string> lines;  ///< newline removed
    int line_number = 0;             ///< of the keyword line in its file, counted from 1
};

/// A flow file as read. Lines longer than 198 characters are read in pieces of 198, each a line.
class FlowParameterFile {
public:
    explicit FlowParameterFile(std::string path) : path_(std::move(path)) {}

    /// Opens the prospect of a "$PROSPECT=" line; 0, or -1 when it cannot be read.
    using ProspectOpener = std::function<int(const std::string& name)>;

    /// Loads every file of "%s/defaults" under the system directory, in order of name: its sections
    /// give site defaults, lines that are put before those of a flow section of the same kind. An
    /// absent directory loads nothing. 0, or -1 with a log line when one of them has an error.
    [[nodiscard]] int read_site_defaults(const std::string& directory);

    /// Reads the flow. 0, or -1 with log lines when it cannot be opened or has an unknown keyword
    /// (the sections read so far stay). A prospect that cannot be opened ends the job.
    [[nodiscard]] int read(const ProspectOpener& open_prospect);

    const std::string& path() const { return path_; }
    /// Name of the last "$PROSPECT=" line, or empty.
    const std::string& prospect() const { return prospect_; }
    const std::list<FlowSection>& sections() const { return sections_; }

private:
    int read_sections(const std::string& path, const ProspectOpener& open_prospect,
                      std::list<FlowSection>& sections);

    std::string path_;
    std::string prospect_;
    std::list<FlowSection> site_defaults_;
    std::list<FlowSection> sections_;
};

}  // namespace halvern
