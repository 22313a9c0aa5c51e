#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

#include "desk/log_reading.h"

namespace halvern {

/// How a log is shown.
struct LogStyle {
    bool colour = false;    ///< warnings and errors stand out
    bool progress = false;  ///< a bar that moves takes the place of the lines of single traces
};

/// What standard output is fit for: both on a terminal; colour unless NO_COLOR is set.
LogStyle style_of_standard_output();

/// Shows a job's log, line by line.
class LogView {
public:
    LogView(std::FILE* out, LogStyle style) : out_(out), style_(style) {}

    void take_line(std::string_view line);
    /// Draws the bar as it is now, and lets everything be seen.
    void update();
    /// Takes the bar away.
    void finish();

    const LogReading& reading() const { return reading_; }

private:
    void clear_bar();

    std::FILE* out_;
    LogStyle style_;
    LogReading reading_;
    bool bar_ = false;
};

/// The bar: how much, how fast, how long still; at most 79 characters.
std::string progress_text(const JobProgress& progress);

/// Shows the log at `path` until `ended` says that nothing more will be written to it, or `stop`
/// says that nobody wants to see more. A log that is not there yet is waited for.
void follow_log(const std::string& path, LogView& view, const std::function<bool()>& ended,
                const std::function<bool()>& stop);

}  // namespace halvern
