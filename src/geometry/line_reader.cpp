#include "geometry/line_reader.h"

#include <algorithm>

namespace halvern {

namespace {
constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
}

LineReader::LineReader(std::size_t longest)
    : longest_(std::clamp<std::size_t>(longest, 1, kLongest)) {}

LineReader::LineReader(const std::string& path, std::size_t longest) : LineReader(longest) {
    file_.reset(std::fopen(path.c_str(), "rb"));
    opened_ = file_ != nullptr;
    if (opened_) block_.resize(kBlockBytes);
}

LineReader LineReader::Over(std::string_view text, std::size_t longest) {
    LineReader reader(longest);
    reader.text_ = reader.window_ = text;
    reader.opened_ = true;
    return reader;
}

bool LineReader::refill() {
    at_ = 0;
    window_ = {};
    if (!file_ || failed_) return false;
    const std::size_t bytes = std::fread(block_.data(), 1, block_.size(), file_.get());
    failed_ = bytes == 0 && std::ferror(file_.get()) != 0;
    window_ = {block_.data(), bytes};
    return bytes > 0;
}

void LineReader::rewind() {
    if (file_) {
        std::rewind(file_.get());
        window_ = {};
    } else {
        window_ = text_;
    }
    at_ = 0;
    line_number_ = 0;
    skip_newline_ = within_line_ = false;
}

bool LineReader::next(std::string_view& line) {
    std::size_t carried = 0;
    for (;;) {
        if (at_ == window_.size() && !refill()) {
            if (carried == 0) return false;
            if (!within_line_) ++line_number_;
            within_line_ = false;
            line = {carry_.data(), carried};
            return true;
        }
        if (skip_newline_) {
            skip_newline_ = false;
            if (window_[at_] == '\n') ++at_;
            continue;  // the window may have ended with it
        }
        const char* const start = window_.data() + at_;
        if (within_line_ && carried == 0 && (*start == '\n' || *start == '\r')) {
            // The piece before took the whole line but its end.
            within_line_ = false;
            skip_newline_ = *start == '\r';
            ++at_;
            continue;
        }
        const std::size_t most = std::min(window_.size() - at_, longest_ - carried);
        const char* end = start;
        while (end != start + most && *end != '\n' && *end != '\r') ++end;
        const auto length = static_cast<std::size_t>(end - start);
        const bool terminated = length < window_.size() - at_ && (*end == '\n' || *end == '\r');
        const bool full = carried + length == longest_;
        if (!terminated && !full) {  // the window ends first
            std::copy(start, end, carry_.data() + carried);
            carried += length;
            at_ += length;
            continue;
        }
        if (carried > 0) {
            std::copy(start, end, carry_.data() + carried);
            line = {carry_.data(), carried + length};
        } else {
            line = {start, length};
        }
        at_ += length;
        if (terminated) {
            skip_newline_ = *end == '\r';
            ++at_;
        }
        if (!within_line_) ++line_number_;
        within_line_ = !terminated;
        return true;
    }
}

std::int64_t LineReader::count_lines() {
    rewind();
    std::int64_t lines = 0;
    std::string_view line;
    while (next(line)) ++lines;
    rewind();
    return lines;
}

}  // namespace halvern
