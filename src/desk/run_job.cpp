#include "desk/run_job.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <thread>

#include "desk/command_error.h"
#include "desk/flow_parameters.h"
#include "desk/workplace.h"
#include "job/job_runner.h"
#include "platform/replace_file.h"

namespace halvern {

FlowDocument with_values(FlowDocument flow, const std::vector<std::string>& overrides) {
    std::map<std::size_t, std::vector<std::string>> assignments;  // by section
    for (const std::string& text : overrides) {
        const std::size_t dot = text.find('.');
        const std::size_t equals = text.find('=');
        if (dot == std::string::npos || equals == std::string::npos || dot > equals) {
            throw CommandError("'" + text + "' is no ITEM.KEY=VALUE, as in AGC.WINDOWSIZE=500");
        }
        assignments[required(flow.find(text.substr(0, dot)))].push_back(text.substr(dot + 1));
    }
    for (const auto& [section, texts] : assignments) assign(flow, section, texts);
    return flow;
}

std::string run_text(const FlowDocument& flow, const std::string& prospect) {
    return "$PROSPECT=" + prospect + "\n" + flow.text();
}

StartedJob start_job(const std::string& flow_name, const std::string& text) {
    const std::string program = installed_program("halvern2");
    const JobFiles files = reserve_job(text);
    JobRecord record{.flow = flow_name, .log = files.log, .start = std::time(nullptr)};
    const auto give_up = [&](const std::string& reason) {
        std::error_code ignored;
        std::filesystem::remove(files.record, ignored);
        std::filesystem::remove(files.flow, ignored);
        throw CommandError(reason);
    };
    if (const Fault fault = replace_file(files.record, record.text())) {
        give_up("cannot write '" + files.record + "': " + fault.reason() +
                "; check disk space and permissions on this directory");
    }
    std::error_code error;
    constexpr std::size_t kToken = 2;  // the one argument that goes without quotes
    auto process = DetachedProcess::start({program, files.log, kLaunchToken, files.flow, flow_name},
                                          error, kToken);
    if (!process) {
        give_up("Failed to run job '" + flow_name +
                "'!  System resources too low or improper installation - Error Code " +
                std::to_string(error.value()) + "?\nThe system's reason: " + error.message());
    }
    record.process = process->id();
    if (replace_file(files.record, record.text())) {
        // The job runs all the same; only 'jobs' and 'stop' will not know its process.
        CurrentWorkplace().notes.push_back(
            "'" + files.record + "' cannot be written: 'halvern stop " +
            std::to_string(files.number) + "' will not find the job.");
    }
    return {files, std::move(*process)};
}

Stopping stop_job(int number, double seconds) {
    using Clock = std::chrono::steady_clock;
    const JobStatus status = job_status(number);
    if (status.state != JobState::kRunning) return Stopping::kWasNotRunning;
    if (!stop_process(status.record.process) && job_runs(status.record)) {
        throw CommandError("job " + std::to_string(number) + ", process " +
                           std::to_string(status.record.process) +
                           ", is another user's and cannot be stopped by you");
    }
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (Clock::now() < end) {
        if (!job_runs(status.record)) return Stopping::kStopped;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return job_runs(status.record) ? Stopping::kStillRuns : Stopping::kStopped;
}

}  // namespace halvern
