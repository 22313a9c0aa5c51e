#pragma once

#include <functional>
#include <string>

#include "flow/flow_document.h"

namespace halvern {

/// A flow file as a job reads it: its document, its prospect, and its sections with the site's
/// defaults, up to the first keyword that there is not.
class FlowParameterFile {
public:
    explicit FlowParameterFile(std::string path) : path_(std::move(path)) {}

    /// Opens the prospect of a "$PROSPECT=" line; 0, or -1 when it cannot be read.
    using ProspectOpener = std::function<int(const std::string& name)>;

    /// Loads the site defaults of a directory ("%s/defaults" under the system directory). 0, or -1
    /// with a log line when one of its files has an error.
    [[nodiscard]] int load_site_defaults(const std::string& directory);

    /// Reads the flow. 0, or -1 with log lines when it cannot be read to its end or has an unknown
    /// keyword (the sections before it stay). A prospect that cannot be opened ends the job.
    [[nodiscard]] int read(const ProspectOpener& open_prospect);

    const std::string& path() const { return path_; }
    /// Name of the last "$PROSPECT=" line, or empty.
    const std::string& prospect() const { return prospect_; }
    const FlowSections& sections() const { return sections_; }

private:
    std::string path_;
    std::string prospect_;
    FlowSections site_defaults_;
    FlowSections sections_;
};

}  // namespace halvern
