#include "inspect/captured_log.h"

#include "foundation/messages.h"

namespace halvern {

CapturedLog::CapturedLog() : stream_(std::tmpfile()) {
    if (stream_) {
        LogDestination::UseStream(stream_.get());
    } else {
        LogDestination::UseStandardOutput();  // which is nowhere
    }
}

CapturedLog::~CapturedLog() { LogDestination::UseStream(stderr); }

std::vector<std::string> CapturedLog::lines() const {
    std::vector<std::string> lines;
    if (!stream_) return lines;
    std::rewind(stream_.get());
    std::string line;
    for (int c; (c = std::fgetc(stream_.get())) != EOF;) {
        if (c == '\n') {
            lines.push_back(std::move(line));
            line.clear();
        } else {
            line += static_cast<char>(c);
        }
    }
    if (!line.empty()) lines.push_back(std::move(line));
    std::fseek(stream_.get(), 0, SEEK_END);
    return lines;
}

std::vector<std::string> CapturedLog::sentences(const char* prefix) const {
    std::vector<std::string> found;
    for (std::string& line : lines()) {
        if (!line.starts_with(prefix)) continue;
        if (const std::size_t colon = line.find(": "); colon != std::string::npos) {
            line.erase(0, colon + 2);
        }
        if (line.ends_with('.')) line.pop_back();
        found.push_back(std::move(line));
    }
    return found;
}

}  // namespace halvern
