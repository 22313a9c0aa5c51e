#include "desk/jobs.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>

#include "desk/command_error.h"
#include "desk/workplace.h"
#include "foundation/global_config.h"
#include "foundation/key_readers.h"
#include "foundation/system_paths.h"
#include "platform/create_file.h"
#include "platform/detached_process.h"
#include "platform/replace_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr int kLastJob = std::numeric_limits<int>::max();

std::string scratch_path(const char* stem, int number) {
    return CurrentConfig().scratch_directory() + kPathSeparator + stem + std::to_string(number);
}

// The job number in a file name of one of the three kinds, or 0.
int job_number(std::string_view file) {
    for (const std::string_view stem : {"flow", "log", "job"}) {
        if (!file.starts_with(stem)) continue;
        const std::string_view digits = file.substr(stem.size());
        int number = 0;
        const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (end.ec == std::errc{} && end.ptr == digits.data() + digits.size() && number > 0) {
            return number;
        }
    }
    return 0;
}

bool write_file(const std::string& path, const std::string& text) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return std::fclose(file) == 0 && written;
}

std::optional<std::time_t> write_time(const std::string& path) {
    std::error_code error;
    const auto time = fs::last_write_time(path, error);
    if (error) return {};
    return std::chrono::system_clock::to_time_t(
        std::chrono::time_point_cast<std::chrono::system_clock::duration>(
            fs::file_time_type::clock::to_sys(time)));
}

}  // namespace

JobFiles::JobFiles(int job)
    : number(job),
      flow(scratch_path("flow", job)),
      log(scratch_path("log", job)),
      record(scratch_path("job", job)) {}

std::string JobRecord::text() const {
    return "PROCESS=" + std::to_string(process) + "\nFLOW=" + flow + "\nLOG=" + log +
           "\nSTART=" + std::to_string(static_cast<std::int64_t>(start)) + "\n";
}

JobRecord JobRecord::parse(const std::string& text) {
    JobRecord record;
    for (const std::string& line : split_lines(text)) {
        std::string value;
        if (ReadKey(line.c_str(), "PROCESS=", value)) record.process = number_at(value);
        if (ReadKey(line.c_str(), "FLOW=", value)) record.flow = value;
        if (ReadKey(line.c_str(), "LOG=", value)) record.log = value;
        if (ReadKey(line.c_str(), "START=", value)) {
            record.start = static_cast<std::time_t>(number_at(value));
        }
    }
    return record;
}

const char* state_name(JobState state) {
    switch (state) {
        case JobState::kStarting:
            return "starting";
        case JobState::kRunning:
            return "running";
        case JobState::kDone:
            return "done";
        case JobState::kFailed:
            return "failed";
        case JobState::kStopped:
            return "stopped";
        case JobState::kKilled:
            break;
    }
    return "killed";
}

std::vector<int> job_numbers() {
    std::vector<int> numbers;
    std::error_code error;
    const std::string& scratch = CurrentConfig().scratch_directory();
    fs::directory_iterator entry(scratch, error);
    for (; !error && entry != fs::directory_iterator{}; entry.increment(error)) {
        if (const int number = job_number(entry->path().filename().string()); number > 0) {
            numbers.push_back(number);
        }
    }
    if (error) {
        throw CommandError("cannot read the scratch directory '" + scratch +
                           "': " + error.message() +
                           "; check its permissions, or 'halvern config SCRATCHDIR=DIR' names "
                           "another one");
    }
    std::ranges::sort(numbers);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

JobFiles reserve_job(const std::string& flow_text) {
    const std::vector<int> numbers = job_numbers();
    std::error_code error;
    for (int last = numbers.empty() ? 0 : numbers.back();;) {
        if (last == kLastJob) {
            throw CommandError("there is no number for a job after " + std::to_string(last) +
                               "; remove the files of that number from '" +
                               CurrentConfig().scratch_directory() + "'");
        }
        JobFiles files(++last);
        error = create_exclusively(files.flow);
        if (error == std::errc::file_exists) continue;
        if (!error && write_file(files.flow, flow_text)) return files;
        if (!error) fs::remove(files.flow, error);
        throw CommandError("Cannot write flow to '" + files.flow +
                           "'.\nCheck disk space and permissions on this directory.\n"
                           "'halvern config SCRATCHDIR=DIR' names another one");
    }
}

JobRecord read_record(const JobFiles& files) {
    return JobRecord::parse(file_text(files.record).value_or(""));
}

bool job_runs(const JobRecord& record) {
    return record.process > 0 && !record.log.empty() && process_is_running(record.process) &&
           process_has_argument(record.process, record.log);
}

namespace {

// Between its number and its process, a job is nobody's: whoever starts it takes a moment.
bool may_still_start(const JobFiles& files, const JobRecord& record) {
    constexpr double kMoment = 60;  // seconds
    const std::time_t since = record.start > 0 ? record.start : write_time(files.flow).value_or(0);
    return std::difftime(std::time(nullptr), since) < kMoment;
}

}  // namespace

JobStatus job_status(int number) {
    const JobFiles files(number);
    std::error_code ignored;
    if (!fs::exists(files.flow, ignored) && !fs::exists(files.log, ignored)) {
        throw CommandError("there is no job " + std::to_string(number) +
                           "; 'halvern jobs' lists those there are");
    }
    JobStatus status{.record = read_record(files), .log = {}};
    const bool runs = job_runs(status.record);       // asked before the log is read to its end
    std::ifstream log(files.log, std::ios::binary);  // of any length
    const bool logged = log.is_open();
    for (std::string line; std::getline(log, line);) status.log.take(line);
    if (status.log.end() == LogReading::End::kNormal) {
        status.state = JobState::kDone;
    } else if (status.log.end() != LogReading::End::kNone) {
        status.state =
            status.log.end() == LogReading::End::kStopped ? JobState::kStopped : JobState::kFailed;
    } else if (runs) {
        status.state = JobState::kRunning;
    } else if (status.record.process > 0 || logged || !may_still_start(files, status.record)) {
        status.state = JobState::kKilled;
    }
    const bool ended = status.state != JobState::kRunning && status.state != JobState::kStarting;
    const std::time_t last =
        ended ? write_time(files.log).value_or(status.record.start) : std::time(nullptr);
    if (status.record.start > 0) {
        status.seconds = std::max(0.0, std::difftime(last, status.record.start));
    }
    return status;
}

int clean_jobs(std::vector<int> numbers) {
    const bool all = numbers.empty();
    if (all) numbers = job_numbers();
    int cleaned = 0;
    for (const int number : numbers) {
        const JobState state = job_status(number).state;
        if (state == JobState::kRunning || state == JobState::kStarting) {
            if (all) continue;
            throw CommandError("job " + std::to_string(number) + " is " + state_name(state) +
                               "; 'halvern stop " + std::to_string(number) + "' ends it");
        }
        const JobFiles files(number);
        for (const std::string& path : {files.log, files.record, files.flow}) {
            std::error_code error;
            fs::remove(path, error);
            if (error) throw CommandError("cannot remove '" + path + "': " + error.message());
        }
        ++cleaned;
    }
    return cleaned;
}

}  // namespace halvern
