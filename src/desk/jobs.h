#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "desk/log_reading.h"

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

/// Removes the files of jobs that have ended, of all of them or of those with these numbers, and
/// gives how many jobs went. CommandError for one that runs or that there is not.
int clean_jobs(std::vector<int> numbers);

}  // namespace halvern
