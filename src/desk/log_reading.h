#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/input_file.h"

namespace halvern {

/// How far a job is in what it does now: reading its input, or after that sending what was sorted.
struct JobProgress {
    long long done = 0;
    long long total = 0;  ///< 0: not known
    double rate = 0;      ///< traces a second; 0: not known yet

    double share() const;         ///< 0 … 1
    double seconds_left() const;  ///< only with a rate
};

/// What a job's log tells, taken line by line while it grows.
class LogReading {
public:
    enum class LineKind { kPlain, kProgress, kWarning, kError };
    enum class End { kNone, kNormal, kError, kStopped };

    /// Takes one line, without its end.
    LineKind take(std::string_view line);

    long long traces() const { return traces_; }  ///< of the input; -1: not known
    long long read() const { return read_; }      ///< so far, as far as the log says
    End end() const { return end_; }
    /// As of the last line of progress; the rate counts from the first line of what is done now.
    JobProgress progress() const;

private:
    using Clock = std::chrono::steady_clock;
    void advance(long long done);

    long long traces_ = -1;
    long long read_ = 0;
    long long sorting_ = -1;  // traces that are sent in order; -1: it still reads
    long long done_ = 0;      // of what is done now
    long long first_ = -1;    // done when the clock was started
    Clock::time_point started_;
    End end_ = End::kNone;
    bool asked_to_stop_ = false;
};

/// A job's log while it is written, read in lines.
class GrowingLog {
public:
    explicit GrowingLog(std::string path) : path_(std::move(path)) {}

    /// Hands on every line that has been completed since the last call; with `last` also the rest
    /// of one that has no end. A log that is not there yet has none.
    void read(const std::function<void(std::string_view line)>& take, bool last);

private:
    std::string path_;
    std::optional<InputFile> file_;
    std::int64_t at_ = 0;
    std::string part_;  // of a line
};

/// The number that the text begins with after blanks, or -1.
long long number_at(std::string_view text);

/// "0:03", "1:02:33".
std::string clock_text(double seconds);

}  // namespace halvern
