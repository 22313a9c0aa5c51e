#include "cli/log_follower.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <thread>

#include "cli/table.h"
#include "foundation/words.h"
#include "platform/input_file.h"
#include "platform/terminal.h"

namespace halvern {

namespace {

constexpr std::chrono::milliseconds kPause{50};
constexpr const char* kRed = "\033[31m";
constexpr const char* kYellow = "\033[33m";
constexpr const char* kPlain = "\033[0m";
constexpr const char* kClearLine = "\r\033[K";

// Shows what has come since `shown` bytes. A C stream will not do: that of Windows stops at the end
// that it has once seen.
void show_rest(const InputFile& file, std::int64_t& shown, LogView& view) {
    char buffer[1 << 16];
    Fault ignored;  // what cannot be read now may be the next time
    while (const std::size_t count =
               file.read_at(shown, std::as_writable_bytes(std::span(buffer)), ignored)) {
        view.take({buffer, count});
        shown += static_cast<std::int64_t>(count);
    }
}

}  // namespace

LogStyle style_of_standard_output() {
    const auto set = [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    };
    const char* type = std::getenv("TERM");
    const bool plain = type && std::string_view(type) == "dumb";
    const bool terminal = is_terminal(stdout) && !plain;
    return {.colour = terminal && !set("NO_COLOR"), .progress = terminal};
}

std::string progress_text(long long read, long long total, long long done, double seconds) {
    constexpr long long kCells = 24;
    // The numbers are a log's, which may hold any.
    const double share = total > 0 ? static_cast<double>(read) / static_cast<double>(total) : 0;
    const auto percent = static_cast<long long>(std::clamp(share, 0.0, 1.0) * 100);
    std::string text = "[" + std::string(static_cast<std::size_t>(percent * kCells / 100), '#');
    text.resize(kCells + 1, '.');
    text += "] " + std::to_string(percent) + " %  " + grouped(read) + " of " + grouped(total);
    if (seconds > 0 && done > 0) {
        const double rate = static_cast<double>(done) / seconds;
        text += "  " + grouped(static_cast<long long>(rate)) + "/s  " +
                clock_text(static_cast<double>(std::max(0LL, total - read)) / rate) + " left";
    }
    return text.substr(0, Table::kWidth - 1);
}

LogView::LogView(std::FILE* out, LogStyle style) : out_(out), style_(style) {}

void LogView::take(std::string_view text) {
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos;) {
        part_ += text.substr(0, end);
        take_line(part_);
        part_.clear();
        text.remove_prefix(end + 1);
    }
    part_ += text;
    if (bar_) draw_bar();
    std::fflush(out_);
}

void LogView::finish() {
    if (!part_.empty()) take_line(part_);
    part_.clear();
    clear_bar();
    std::fflush(out_);
}

void LogView::take_line(std::string_view line) {
    using Kind = LogReading::LineKind;
    const Kind kind = reading_.take(line);
    if (kind == Kind::kProgress && style_.progress && reading_.traces() > 0) {
        // A sort reads the input once more: the rate counts from its first trace.
        if (first_trace_ < 0 || reading_.read() < first_trace_) {
            first_trace_ = reading_.read();
            first_time_ = std::chrono::steady_clock::now();
        }
        bar_ = true;
        return;
    }
    const bool drawn = bar_;
    clear_bar();
    const char* colour = !style_.colour           ? nullptr
                         : kind == Kind::kError   ? kRed
                         : kind == Kind::kWarning ? kYellow
                                                  : nullptr;
    std::fprintf(out_, "%s%.*s%s\n", colour ? colour : "", static_cast<int>(line.size()),
                 line.data(), colour ? kPlain : "");
    bar_ = drawn && reading_.end() == LogReading::End::kNone && reading_.read() < reading_.traces();
}

void LogView::clear_bar() {
    if (bar_) std::fputs(kClearLine, out_);
    bar_ = false;
}

void LogView::draw_bar() {
    const std::chrono::duration<double> went = std::chrono::steady_clock::now() - first_time_;
    std::fprintf(out_, "%s%s", kClearLine,
                 progress_text(reading_.read(), reading_.traces(), reading_.read() - first_trace_,
                               went.count())
                     .c_str());
}

void follow_log(const std::string& path, LogView& view, const std::function<bool()>& ended,
                const std::function<bool()>& stop) {
    std::optional<InputFile> file;
    std::int64_t shown = 0;
    for (bool last = false; !last;) {
        last = ended();  // asked first, so that nothing is written after the last look
        if (!file) {
            if (Result<InputFile> opened = InputFile::open(path)) file = std::move(*opened);
        }
        if (file) show_rest(*file, shown, view);
        if (last || stop()) break;
        std::this_thread::sleep_for(kPause);
    }
    view.finish();
}

}  // namespace halvern
