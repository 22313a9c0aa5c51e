#include "flow/flow_file.h"

#include "foundation/messages.h"
#include "platform/text_file.h"

namespace halvern {

int FlowParameterFile::load_site_defaults(const std::string& directory) {
    Result<FlowSections> sections = read_site_defaults(directory);
    if (!sections) {
        LogPrint("ERROR IN SITE DEFAULTS: %s\n", sections.fault().reason().c_str());
        return -1;
    }
    site_defaults_ = std::move(*sections);
    return 0;
}

int FlowParameterFile::read(const ProspectOpener& open_prospect) {
    const Result<std::string> text = read_text_file(path_);
    if (!text) {
        LogPrint("CANNOT OPEN PARAMETER FILE: %s\n", path_.c_str());
        if (!text.fault().is_missing()) LogPrint("REASON: %s\n", text.fault().reason().c_str());
        return -1;
    }
    const FlowDocument document(*text);
    std::size_t section = 0;
    for (std::size_t i = 0; i < document.line_count(); ++i) {
        const std::string& line = document.line(i);
        if (const auto name = prospect_of_line(line)) {
            prospect_ = *name;
            if (open_prospect && open_prospect(*name) != 0) {
                LogPrint("Cannot read prospect file '%s'\n", name->c_str());
                TerminateJob(kJobError);
                return -1;
            }
        } else if (line.starts_with('$')) {
            if (!document.sections()[section].kind) {
                LogPrint("ERROR IN PARAMETER FILE: %s\n", path_.c_str());
                LogPrint("UNDEFINED STRING:        %s\n",
                         line.c_str() + (line.starts_with("$$") ? 2 : 1));
                return -1;
            }
            sections_.push_back(document.flow_section(section++, site_defaults_));
        }
    }
    return 0;
}

}  // namespace halvern
