#pragma once

#include <string>
#include <vector>

#include "desk/flow_text.h"
#include "desk/jobs.h"
#include "platform/detached_process.h"

namespace halvern {

struct StartedJob {
    JobFiles files;
    DetachedProcess process;
};

/// The text of a run file: the prospect's line, then the flow with some parameters of its own,
/// "ITEM.KEY=VALUE" or "ITEM#2.KEY=VALUE" each. CommandError when one of them fits nothing.
std::string run_text(FlowText flow, const std::string& prospect,
                     const std::vector<std::string>& overrides);

/// Gives the run a number and its files and starts the job program on it, detached.
StartedJob start_job(const std::string& flow_name, const std::string& text);

/// What became of an attempt to end a job.
enum class Stopping { kStopped, kStillRuns, kWasNotRunning };

/// Asks a job to end and waits for it at most `seconds`. CommandError when it may not be asked.
Stopping stop_job(int number, double seconds);

}  // namespace halvern
