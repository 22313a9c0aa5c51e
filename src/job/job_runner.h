#pragma once

#include <memory>
#include <string>
#include <vector>

#include "flow/flow_file.h"
#include "flow/flow_item.h"

namespace halvern {

/// The word that only the system's own programs put on the job program's command line.
inline constexpr const char kLaunchToken[] = "rv3086";

/// Process-wide state of a job.
struct Job {
    std::string product_title;   ///< name and version, as in "Halvern 2.6"
    std::string extra_argument;  ///< of the command line; empty when absent
    bool has_extra_argument = false;
    std::unique_ptr<FlowParameterFile> flow;
    std::unique_ptr<FlowItem> head;  ///< owns the chain
    bool exiting = false;            ///< shutting down already: ending the job must not exit again
};
Job& CurrentJob();

/// Runs a job from its split command line: program, log file, launch token, flow file and an
/// optional extra value. Every path ends in TerminateJob.
void RunJob(const std::vector<std::string>& arguments);

/// Starts the head of the chain, or with `resume` lets it go on after a pause. A head that cannot
/// drive a flow (a process, an output) runs nothing.
void StartHead(FlowItem& head, bool resume);

/// The end of a job but for leaving the process: the last log lines, the chain destroyed when all
/// went well, the log closed, scratch files removed. Gives the exit status.
int FinishJob(int normal);

}  // namespace halvern
