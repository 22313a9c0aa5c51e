#include "cli/log_follower.h"

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "cli/table.h"
#include "foundation/words.h"
#include "platform/terminal.h"

namespace halvern {

namespace {

constexpr std::chrono::milliseconds kPause{50};
constexpr const char* kRed = "\033[31m";
constexpr const char* kYellow = "\033[33m";
constexpr const char* kPlain = "\033[0m";
constexpr const char* kClearLine = "\r\033[K";

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

std::string progress_text(const JobProgress& progress) {
    constexpr std::size_t kCells = 24;
    const auto percent = static_cast<std::size_t>(progress.share() * 100);
    std::string text = "[" + std::string(percent * kCells / 100, '#');
    text.resize(kCells + 1, '.');
    text += "] " + std::to_string(percent) + " %  " + grouped(progress.done) + " of " +
            grouped(progress.total);
    if (progress.rate > 0) {
        text += "  " + grouped(static_cast<long long>(progress.rate)) + "/s  " +
                clock_text(progress.seconds_left()) + " left";
    }
    return text.substr(0, Table::kWidth - 1);
}

void LogView::take_line(std::string_view line) {
    using Kind = LogReading::LineKind;
    const Kind kind = reading_.take(line);
    const JobProgress progress = reading_.progress();
    if (kind == Kind::kProgress && style_.progress && progress.total > 0) {
        bar_ = true;
        return;
    }
    const bool drawn = bar_;
    clear_bar();
    const char* colour = !style_.colour           ? nullptr
                         : kind == Kind::kError   ? kRed
                         : kind == Kind::kWarning ? kYellow
                                                  : nullptr;
    std::fprintf(out_, "%s%s%s\n", colour ? colour : "", printable(line).c_str(),
                 colour ? kPlain : "");
    bar_ = drawn && reading_.end() == LogReading::End::kNone && progress.done < progress.total;
}

void LogView::clear_bar() {
    if (bar_) std::fputs(kClearLine, out_);
    bar_ = false;
}

void LogView::update() {
    if (bar_) std::fprintf(out_, "%s%s", kClearLine, progress_text(reading_.progress()).c_str());
    std::fflush(out_);
}

void LogView::finish() {
    clear_bar();
    std::fflush(out_);
}

void follow_log(const std::string& path, LogView& view, const std::function<bool()>& ended,
                const std::function<bool()>& stop) {
    GrowingLog log(path);
    for (bool last = false; !last;) {
        const bool done = ended();  // asked first, so that nothing is written after the last look
        last = done || stop();
        log.read([&](std::string_view line) { view.take_line(line); }, last);
        view.update();
        if (!last) std::this_thread::sleep_for(kPause);
    }
    view.finish();
}

}  // namespace halvern
