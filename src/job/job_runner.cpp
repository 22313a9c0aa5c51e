#include "job/job_runner.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "flow/process_flow_item.h"
#include "foundation/global_config.h"
#include "foundation/installation_tree.h"
#include "foundation/messages.h"
#include "foundation/prospect.h"
#include "foundation/scratch.h"
#include "foundation/system_paths.h"
#include "foundation/time_stamp.h"
#include "job/catalogue.h"
#include "job/chain.h"
#include "native/native_writer.h"
#include "platform/job_signals.h"
#include "platform/message_box.h"
#include "platform/program_path.h"

namespace halvern {

namespace {

// Arguments by position; the log file is made only when the flow file is named as well.
enum Argument { kProgram, kLogFile, kToken, kFlowFile, kExtra };

void OpenLog(const std::vector<std::string>& arguments) {
    LogDestination::UseStandardOutput();
    if (arguments.size() <= kFlowFile) return;
    const Fault fault = LogDestination::UseFile(arguments[kLogFile]);
    if (!fault) return;
    // Without a log the job still runs; whoever watches standard error is told.
    std::fprintf(stderr,
                 "halvern2: the log file '%s' cannot be created: %s. The job runs without.\n",
                 arguments[kLogFile].c_str(), fault.reason().c_str());
}

bool IsLaunched(const std::vector<std::string>& arguments) {
    return arguments.size() >= 3 && arguments.size() <= 5 && arguments[kToken] == kLaunchToken;
}

void ReadConfiguration() {
    const std::string path = TreePath(SystemDirectory(), "halvern.cfg");
    LogPrint("Reading Configuration file '%s'.\n", path.c_str());
    if (ReadGlobalConfig(path) != 0) {
        LogPrint("Error reading configuration file '%s'.\n", path.c_str());
    }
    // Printed in every case: the job goes on with the values it has.
    LogPrint("Configuration file '%s' successfully read.\n", path.c_str());
}

}  // namespace

Job& CurrentJob() {
    static Job job;
    return job;
}

void StartHead(FlowItem& head, bool resume) {
    ReadPauseFlag = 0;
    auto* runs = dynamic_cast<RunsFlow*>(&head);
    if (!runs) return;
    if (resume) {
        runs->ResumeInput();
    } else {
        runs->RunInput();
    }
}

void RunJob(const std::vector<std::string>& arguments) {
    on_stop_request(RequestJobStop);
    OpenLog(arguments);
    std::srand(static_cast<unsigned>(std::time(nullptr)));
    Job& job = CurrentJob();
    job.product_title = "Halvern " HALVERN_RELEASE;
    if (!IsLaunched(arguments)) {
        show_message_box(
            "Usage Error",
            "Invalid Usage of Halvern2.  This program should not be started by the user.");
        return TerminateJob(kJobError);
    }
    job.has_extra_argument = arguments.size() > kExtra;
    if (job.has_extra_argument) job.extra_argument = arguments[kExtra];

    SetSystemDirectory(SystemDirectoryOf(program_path(arguments[kProgram])));
    CreateInstallationTree();
    ReadConfiguration();
    const auto open_prospect = [](const std::string& name) { return CurrentProspect().open(name); };
    // The job starts in the default prospect; one that cannot be read has said so and is left.
    (void)open_prospect("default");

    remove_abandoned_datasets(NativePlaces::configured(), LogReporter(""));

    const std::string flow_path = arguments.size() > kFlowFile ? arguments[kFlowFile] : "";
    job.flow = std::make_unique<FlowParameterFile>(flow_path);
    if (job.flow->load_site_defaults(TreePath(SystemDirectory(), "defaults")) != 0 ||
        job.flow->read(open_prospect) != 0) {
        LogPrint("Cannot Read parameters from '%s'\n", flow_path.c_str());
        return TerminateJob(kJobError);
    }
    job.head = BuildChain(job.flow->sections(), [](const FlowSection& section) {
        return CreateFlowItem(section, LogFlag::kLog);
    });
    if (!job.head) {
        LogPrint("No flow to process.\n");
        return TerminateJob(kJobError);
    }
    LogPrint("Starting flow at '%s'\n", time_stamp().c_str());
    StartHead(*job.head, false);
    TerminateJob(kJobNormal);
}

int FinishJob(int normal) {
    const std::string stamp = time_stamp();
    Job& job = CurrentJob();
    if (normal == kJobNormal) {
        if (job.head) {
            job.head->DeleteChain();
            job.head.reset();
        }
        job.flow.reset();
        LogPrint("Job completed normally at '%s'\n", stamp.c_str());
    } else {
        LogPrint("Job terminated with error at '%s'\n", stamp.c_str());
    }
    LogDestination::Close();
    RemoveScratchFiles();
    return normal == kJobNormal ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace halvern
