#include "cli/quiet_log.h"

#include "foundation/messages.h"

namespace halvern {

QuietLog::QuietLog() : file_(std::tmpfile()) {
    if (file_) {
        LogDestination::UseStream(file_);
    } else {
        LogDestination::UseStandardOutput();  // which is nowhere
    }
}

QuietLog::~QuietLog() {
    LogDestination::UseStream(stderr);
    if (file_) std::fclose(file_);
}

std::vector<std::string> QuietLog::sentences(const char* prefix) const {
    std::vector<std::string> found;
    if (!file_) return found;
    std::string text;
    char buffer[4096];
    std::fflush(file_);
    std::rewind(file_);
    for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, file_)) > 0;) {
        text.append(buffer, got);
    }
    std::fseek(file_, 0, SEEK_END);
    for (std::size_t at = 0, end; at < text.size(); at = end + 1) {
        end = std::min(text.find('\n', at), text.size());
        std::string line = text.substr(at, end - at);
        if (!line.starts_with(prefix)) continue;
        if (const std::size_t colon = line.find(": "); colon != std::string::npos) {
            line.erase(0, colon + 2);
        }
        if (line.ends_with('.')) line.pop_back();
        found.push_back(line);
    }
    return found;
}

}  // namespace halvern
