#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/log_follower.h"
#include "cli/say.h"
#include "cli/table.h"
#include "desk/command_error.h"
#include "desk/jobs.h"
#include "desk/run_job.h"
#include "desk/workplace.h"
#include "foundation/time_stamp.h"
#include "foundation/words.h"
#include "platform/input_file.h"
#include "platform/job_signals.h"

namespace halvern {

namespace {

struct Options {
    int number = 0;
    bool csv = false;
    bool follow = false;
    bool clean = false;
    std::vector<int> numbers;
};

volatile std::sig_atomic_t interrupted = 0;

std::string traces_text(const JobStatus& status, bool csv) {
    const long long read = status.log.read();
    const long long traces = status.log.traces();
    if (csv) return std::to_string(read);
    if (traces < 0) return read > 0 ? grouped(read) : "";
    if (read == traces) return grouped(read);
    return grouped(read) + " of " + grouped(traces);
}

void jobs(const Options& options) {
    open_system_directory();
    if (options.clean) {
        const int count = clean_jobs(options.numbers);
        return say("The files of %s removed.\n", counted(count, "job").c_str());
    }
    Table table({"job", "flow", "state", "traces", "started", "time"});
    for (const int number : job_numbers()) {
        const JobStatus status = job_status(number);
        const bool timed = status.record.start > 0;
        table.add({std::to_string(number), status.record.flow, state_name(status.state),
                   traces_text(status, options.csv), timed ? time_stamp(status.record.start) : "",
                   timed ? clock_text(status.seconds) : ""});
    }
    if (table.empty() && !options.csv) {
        say("There are no jobs yet; 'halvern run FLOW' starts one.\n");
    } else {
        table.print(options.csv);
    }
}

// Nobody writes to its log any more.
bool has_ended(int number) {
    const JobRecord record = read_record(JobFiles(number));
    return record.process > 0 ? !job_runs(record) : job_status(number).state != JobState::kStarting;
}

void log(const Options& options) {
    open_system_directory();
    const std::vector<int> numbers = job_numbers();
    if (numbers.empty()) throw CommandError("there are no jobs yet; 'halvern run FLOW' starts one");
    const int number = options.number > 0 ? options.number : numbers.back();
    const JobStatus status = job_status(number);
    const JobFiles files(number);
    const bool goes_on = status.state == JobState::kRunning || status.state == JobState::kStarting;
    std::error_code ignored;
    if (!std::filesystem::exists(files.log, ignored) && !(options.follow && goes_on)) {
        throw CommandError("job " + std::to_string(number) + " has no log (" +
                           state_name(status.state) + "); 'halvern jobs' tells more");
    }
    if (std::filesystem::exists(files.log, ignored) && !InputFile::open(files.log)) {
        throw CommandError("cannot read '" + files.log + "'; check its permissions");
    }
    LogView view(stdout, style_of_standard_output());
    if (options.follow) on_stop_request([] { interrupted = 1; });
    follow_log(
        files.log, view, [&] { return !options.follow || !goes_on || has_ended(number); },
        [] { return interrupted != 0; });
}

void stop(const Options& options) {
    open_system_directory();
    constexpr double kPatience = 10;  // seconds; a job ends after its current trace
    const std::string job = "Job " + std::to_string(options.number);
    switch (stop_job(options.number, kPatience)) {
        case Stopping::kStopped: {
            const JobStatus status = job_status(options.number);
            say("%s has ended (%s).\n", job.c_str(), state_name(status.state));
            return;
        }
        case Stopping::kStillRuns:
            command_failed("stop", "job " + std::to_string(options.number) +
                                       " was asked to stop, which it does after its current "
                                       "trace, and still runs; look again with 'halvern jobs'");
        case Stopping::kWasNotRunning:
            command_failed("stop", "job " + std::to_string(options.number) + " is not running (" +
                                       state_name(job_status(options.number).state) + ")");
    }
}

}  // namespace

void add_jobs_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("jobs", "List the jobs, running and ended");
    command->footer("Example:\n  halvern jobs --csv > jobs.csv\n  halvern jobs --clean");
    const auto options = std::make_shared<Options>();
    command->add_flag("--csv", options->csv, "Print the table as CSV");
    CLI::Option* clean =
        command->add_flag("--clean", options->clean, "Remove the files of jobs that have ended");
    command->add_option("jobs", options->numbers, "Numbers of the jobs to clean [all]")
        ->type_name("N")
        ->needs(clean)
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    command->callback([options] { jobs(*options); });
}

void add_log_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("log", "Show the log of a job");
    command->footer("Example:\n  halvern log 3 -f\n      shows the log of job 3 as it grows.");
    const auto options = std::make_shared<Options>();
    command->add_option("job", options->number, "Number of the job [the last one]")
        ->type_name("N")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    command->add_flag("-f,--follow", options->follow, "Go on until the job ends");
    command->callback([options] { log(*options); });
}

void add_stop_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("stop", "End a running job");
    command->footer("Example:\n  halvern stop 3");
    const auto options = std::make_shared<Options>();
    command->add_option("job", options->number, "Number of the job")
        ->type_name("N")
        ->required()
        ->check(CLI::Range(1, std::numeric_limits<int>::max()));
    command->callback([options] { stop(*options); });
}

}  // namespace halvern
