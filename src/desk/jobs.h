#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// The files of job N in the scratch directory: flowN (what it runs), logN and jobN (what is known
/// of it besides). Every terminal sees the same jobs, because these files are all there is.
struct JobFiles {
    explicit JobFiles(int number);
    int number;
    std::string flow;
    std::string log;
    std::string record;
};

/// What was noted down when a job was started.
struct JobRecord {
    std::int64_t process = 0;  ///< 0: it has not been started yet
    std::string flow;          ///< its name
    std::string log;           ///< path, as the process got it
    std::time_t start = 0;     ///< 0: not known

    std::string text() const;
    static JobRecord parse(const std::string& text);
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

private:
    long long traces_ = -1;
    long long read_ = 0;
    End end_ = End::kNone;
    bool asked_to_stop_ = false;
};

/// Stopped: it ended because it was asked to; killed: it ended without a last line.
enum class JobState { kStarting, kRunning, kDone, kFailed, kStopped, kKilled };
const char* state_name(JobState state);

struct JobStatus {
    JobRecord record;
    LogReading log;
    JobState state = JobState::kStarting;
    double seconds = 0;  ///< from its start to its end or to now
};

/// Numbers of the jobs in the scratch directory, ascending.
std::vector<int> job_numbers();

/// Takes the number above the highest one for a new job by creating its flow file, which nobody
/// else then gets, and writes it. CommandError when the directory does not take the file.
JobFiles reserve_job(const std::string& flow_text);

/// CommandError when there is no such job.
JobStatus job_status(int number);

/// Whether the job's process still runs.
bool job_runs(const JobRecord& record);

/// The record of a job; empty when there is none.
JobRecord read_record(const JobFiles& files);

/// "0:03", "1:02:33".
std::string clock_text(double seconds);

}  // namespace halvern
