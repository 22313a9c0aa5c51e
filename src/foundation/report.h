#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/messages.h"

namespace halvern {

/// What a text weighs. kLog: a line of the log that nobody's name stands before.
enum class Weight { kLog, kMessage, kWarning, kError };

/// Takes what a reader, a writer, a store or a flow item has to say; whoever makes one of those
/// gives it one. A flow item is a reporter itself: in a job it puts its name before the text and
/// logs it. Texts end with "\n", as in the log, and are data: a "%" that came in with an argument
/// stays as it is. An error does not end anything by itself.
class Reporter {
public:
    virtual ~Reporter() = default;

    HALVERN_PRINTF(2, 3) void Log(const char* format, ...) const;
    HALVERN_PRINTF(2, 3) void Message(const char* format, ...) const;
    HALVERN_PRINTF(2, 3) void Warning(const char* format, ...) const;
    HALVERN_PRINTF(2, 3) void Error(const char* format, ...) const;

    /// Takes one text; of kMessage and above at most 999 bytes, longer text is cut.
    virtual void Take(Weight weight, std::string_view text) const = 0;
};

/// Reports into the job's log, under a name.
class LogReporter final : public Reporter {
public:
    explicit LogReporter(const char* name) : name_(name) {}
    void Take(Weight weight, std::string_view text) const override;

private:
    const char* name_;
};

/// Keeps what it is told, in order, without the line ends.
class CollectedReports final : public Reporter {
public:
    struct Entry {
        Weight weight;
        std::string text;
    };

    void Take(Weight weight, std::string_view text) const override;

    const std::vector<Entry>& entries() const { return entries_; }
    /// The texts of one weight, without their final stops.
    std::vector<std::string> of(Weight weight) const;

private:
    mutable std::vector<Entry> entries_;  // speaking does not change the one who is told
};

/// Says nothing anywhere.
class SilentReporter final : public Reporter {
public:
    void Take(Weight, std::string_view) const override {}
};

}  // namespace halvern
