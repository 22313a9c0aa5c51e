#pragma once

#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "desk/jobs.h"

namespace halvern {

/// How a log is shown.
struct LogStyle {
    bool colour = false;    ///< warnings and errors stand out
    bool progress = false;  ///< a bar that moves takes the place of the "Reading Trace" lines
};

/// What standard output is fit for: both on a terminal; colour unless NO_COLOR is set.
LogStyle style_of_standard_output();

/// Shows a job's log as it grows. Text may come in pieces; a line is shown when it is whole.
class LogView {
public:
    LogView(std::FILE* out, LogStyle style);

    void take(std::string_view text);
    /// Shows what is left of a last line that has no end, and takes the bar away.
    void finish();

    const LogReading& reading() const { return reading_; }

private:
    void take_line(std::string_view line);
    void clear_bar();
    void draw_bar();

    std::FILE* out_;
    LogStyle style_;
    LogReading reading_;
    std::string part_;  // of a line
    bool bar_ = false;
    std::chrono::steady_clock::time_point first_time_;  // of the first "Reading Trace" line
    long long first_trace_ = -1;                        // that it named
};

/// The bar: how much, how fast, how long still; at most 79 characters. `seconds` went by while
/// `done` traces of `total` were read.
std::string progress_text(long long read, long long total, long long done, double seconds);

/// Shows the log at `path` until `ended` says that nothing more will be written to it, or `stop`
/// says that nobody wants to see more. A log that is not there yet is waited for.
void follow_log(const std::string& path, LogView& view, const std::function<bool()>& ended,
                const std::function<bool()>& stop);

}  // namespace halvern
