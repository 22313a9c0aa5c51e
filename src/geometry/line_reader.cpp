#include "geometry/line_reader.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

namespace halvern {

namespace {
constexpr std::size_t kBlockBytes = std::size_t{1} << 20;
}

LineReader::LineReader(std::size_t longest)
    : longest_(std::clamp<std::size_t>(longest, 1, kLongest)) {}

LineReader::LineReader(const std::string& path, std::size_t longest) : LineReader(longest) {
    Result<InputFile> opened = InputFile::open(path);
    if (!opened) {
        fault_ = opened.fault();
        return;
    }
    file_ = std::move(*opened);
    opened_ = true;
    block_.resize(kBlockBytes);
    bytes_ = file_->size();
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
    if (!file_ || fault_) return false;
    const std::size_t bytes =
        file_->read_at(passed_, std::as_writable_bytes(std::span(block_)), fault_);
    if (bytes == 0 && !fault_ && passed_ < bytes_) fault_ = Fault("the file has become shorter");
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
