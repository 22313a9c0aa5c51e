#include "flow/flow_file.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <memory>

#include "foundation/key_readers.h"
#include "foundation/messages.h"

namespace halvern {

namespace {

constexpr int kLineBuffer = 199;  // with its terminating zero: 198 characters a read

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

int FlowParameterFile::read_site_defaults(const std::string& directory) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory, ignored)) {
        if (entry.is_regular_file(ignored)) files.push_back(entry.path().filename().string());
    }
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        if (read_sections(directory + "/" + file, {}, site_defaults_) != 0) return -1;
    }
    return 0;
}

int FlowParameterFile::read(const ProspectOpener& open_prospect) {
    const int result = read_sections(path_, open_prospect, sections_);
    for (FlowSection& section : sections_) {
        std::vector<std::string> lines;
        for (const FlowSection& site : site_defaults_) {
            if (site.kind != section.kind || site.disabled) continue;
            lines.insert(lines.end(), site.lines.begin(), site.lines.end());
        }
        section.lines.insert(section.lines.begin(), lines.begin(), lines.end());
    }
    return result;
}

int FlowParameterFile::read_sections(const std::string& path, const ProspectOpener& open_prospect,
                                     std::list<FlowSection>& sections) {
    std::error_code error;
    const bool folder = std::filesystem::is_directory(path, error);
    const std::unique_ptr<std::FILE, CloseFile> file(folder ? nullptr
                                                            : std::fopen(path.c_str(), "rb"));
    if (!file) {
        LogPrint("CANNOT OPEN PARAMETER FILE: %s\n", path.c_str());
        return -1;
    }
    char line[kLineBuffer];
    int number = 1;
    while (std::fgets(line, sizeof line, file.get())) {
        const int line_number = number;
        std::size_t length = std::strlen(line);
        if (length > 0 && line[length - 1] == '\n') {
            line[--length] = '\0';
            ++number;
        }
        if (std::string name; ReadKey(line, "$PROSPECT=", name)) {
            prospect_ = name;
            if (open_prospect && open_prospect(name) != 0) {
                LogPrint("Cannot read prospect file '%s'\n", name.c_str());
                TerminateJob(kJobError);
                return -1;
            }
        } else if (line[0] == '$') {
            const bool disabled = line[1] == '$';
            const char* text = line + (disabled ? 2 : 1);
            const auto kind = match_keyword(text);
            if (!kind) {
                LogPrint("ERROR IN PARAMETER FILE: %s\n", path.c_str());
                LogPrint("UNDEFINED STRING:        %s\n", text);
                return -1;
            }
            sections.push_back({.disabled = disabled,
                                .kind = *kind,
                                .keyword = flow_item_kind(*kind).keyword,
                                .lines = {},
                                .line_number = line_number});
        } else if (!sections.empty()) {
            sections.back().lines.emplace_back(line);
        }
    }
    return 0;
}

}  // namespace halvern
