#pragma once

#include <cstdarg>
#include <cstdio>
#include <string>

#include "platform/fault.h"

/// Lets the compiler hold a printf-like call's arguments against its format (positions from 1).
#if defined(__MINGW32__)
#define HALVERN_PRINTF(format_position, first_argument) \
    [[gnu::format(gnu_printf, format_position, first_argument)]]
#else
#define HALVERN_PRINTF(format_position, first_argument) \
    [[gnu::format(printf, format_position, first_argument)]]
#endif

namespace halvern {

/// How a job ends, the argument of TerminateJob.
inline constexpr int kJobError = 0;
inline constexpr int kJobNormal = 1;

/// What TerminateJob throws where there is no job to end: in the front door, which checks flows,
/// and in the tests. No item catches it.
struct JobEnded {
    int normal;  ///< its argument: kJobError or kJobNormal
};

/// Ends the job: writes its last log line, removes its scratch files and exits the process with
/// status 1 (kJobError) or 0 (kJobNormal). Every program brings its own: the job program's returns
/// only while it is already shutting down, every other one's throws JobEnded. Callers return right
/// after it.
void TerminateJob(int normal);

/// Where the log goes. Chosen once, at start; process-wide.
class LogDestination {
public:
    /// Standard output, which by intent means nowhere: a job without a log file is silent.
    static void UseStandardOutput();

    /// Creates (and empties) the file `path`, open to other readers while the job runs. Every
    /// LogPrint is one write, so a reader sees each line as soon as it is printed. With a fault the
    /// destination is unchanged.
    static Fault UseFile(const std::string& path);

    /// Another C stream, not owned: the front door's console, a test's memory stream.
    static void UseStream(std::FILE* stream);

    /// Closes a log file that is open; the destination becomes standard output.
    static void Close();
};

/// Writes printf-formatted text to the log destination. To a log file at most 9,999 bytes a call:
/// longer text is cut, never overrun. The first that cannot be written to a log file is told on
/// standard error; the job goes on, and so do the attempts.
HALVERN_PRINTF(1, 2) void LogPrint(const char* format, ...);
HALVERN_PRINTF(1, 0) void LogPrintV(const char* format, std::va_list arguments);

}  // namespace halvern
