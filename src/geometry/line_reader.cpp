#include "geometry/line_reader.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace halvern {

namespace {
constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
}

LineReader::LineReader(std::size_t longest)
    : longest_(std::clamp<std::size_t>(longest, 1, kLongest)) {}

LineReader::LineReader(const std::string& path, std::size_t longest) : LineReader(longest) {
    std::error_code unknown;
    if (std::filesystem::is_directory(path, unknown)) return;  // which opens, but cannot be read
    file_.reset(std::fopen(path.c_str(), "rb"));
    opened_ = file_ != nullptr;
    if (!opened_) return;
    block_.resize(kBlockBytes);
    const std::uintmax_t bytes = std::filesystem::file_size(path, unknown);
    if (!unknown) bytes_ = static_cast<std::int64_t>(bytes);
}

LineReader LineReader::Over(std::string_view text, std::size_t longest) {
    LineReader reader(longest);
    reader.window_ = text;
    reader.opened_ = true;
    reader.bytes_ = static_cast<std::int64_t>(text.size());
    return reader;
}

bool LineReader::refill() {
    passed_ += static_cast<std::int64_t>(window_.size());
    at_ = 0;
    window_ = {};
    if (!file_ || failed_) return false;
    const std::size_t bytes = std::fread(block_.data(), 1, block_.size(), file_.get());
    failed_ = bytes == 0 && std::ferror(file_.get()) != 0;
    window_ = {block_.data(), bytes};
    return bytes > 0;
}

bool LineReader::next(std::string_view& line) {
    std::size_t carried = 0;
    const auto hand_out = [&](const char* start, std::size_t length, bool ended) {
        if (carried > 0) {
            std::copy_n(start, length, carry_.data() + carried);
            line = {carry_.data(), carried + length};
        } else {
            line = {start, length};
        }
        if (!within_line_) ++line_number_;
        within_line_ = !ended;
        return true;
    };
    for (;;) {
        if (at_ == window_.size() && !refill()) {
            return carried > 0 && hand_out(nullptr, 0, false);
        }
        if (skip_newline_) {
            skip_newline_ = false;
            if (window_[at_] == '\n') ++at_;
            continue;  // the window may have ended with it
        }
        const char* const start = window_.data() + at_;
        const std::size_t most = std::min(window_.size() - at_, longest_ - carried);
        const auto* end = static_cast<const char*>(std::memchr(start, '\n', most));
        const auto before = end ? static_cast<std::size_t>(end - start) : most;
        if (const void* bare = std::memchr(start, '\r', before)) {
            end = static_cast<const char*>(bare);
        }
        if (end) {
            const auto length = static_cast<std::size_t>(end - start);
            at_ += length + 1;
            if (*end == '\r') {
                skip_newline_ = at_ == window_.size();
                at_ += !skip_newline_ && window_[at_] == '\n';
            }
            return hand_out(start, length, true);
        }
        at_ += most;
        if (carried + most == longest_) return hand_out(start, most, false);
        std::copy_n(start, most, carry_.data() + carried);  // the window ends first
        carried += most;
    }
}

std::int64_t LineReader::count_lines() {
    std::int64_t lines = 0;
    std::string_view line;
    while (next(line)) ++lines;
    return lines;
}

}  // namespace halvern
