#pragma once

#include <string>
#include <vector>

#include "desk/jobs.h"
#include "flow/flow_document.h"
#include "platform/detached_process.h"

namespace halvern {

struct StartedJob {
    JobFiles files;
    DetachedProcess process;
};

/// The flow with some values of its own, "ITEM.KEY=VALUE" or "ITEM#2.KEY=VALUE" each. CommandError
/// when one of them fits nothing.
FlowDocument with_values(FlowDocument flow, const std::vector<std::string>& overrides);

/// The text of a run file: the prospect's line, then the flow.
std::string run_text(const FlowDocument& flow, const std::string& prospect);

/// Gives the run a number and its files and starts the job program on it, detached.
StartedJob start_job(const std::string& flow_name, const std::string& text);

/// What became of an attempt to end a job.
enum class Stopping { kStopped, kStillRuns, kWasNotRunning };

/// Asks a job to end and waits for it at most `seconds`. CommandError when it may not be asked.
Stopping stop_job(int number, double seconds);

}  // namespace halvern
