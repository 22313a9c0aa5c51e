#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/log_follower.h"
#include "cli/say.h"
#include "desk/flow_check.h"
#include "desk/flows.h"
#include "desk/run_job.h"
#include "desk/workplace.h"
#include "foundation/prospect.h"
#include "platform/job_signals.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Examples:
  halvern run gain
      checks the flow, runs it and shows its log; Ctrl-C leaves the job running.
  halvern run gain AGC.WINDOWSIZE=250 SEGYDOUTPUT.FILE=short.sgy --detach
      runs it with other values, which the flow itself does not keep, and comes
      back at once.)";

struct Options {
    std::string name;
    std::vector<std::string> overrides;
    bool detach = false;
    bool no_check = false;
};

volatile std::sig_atomic_t interrupted = 0;

void say_how_to_go_on(int number) {
    say("Job %d is running.  'halvern log %d -f' follows its log, 'halvern stop %d' ends it.\n",
        number, number, number);
}

// Shows the log to its end. False when the user leaves it.
bool follow(StartedJob& job, LogView& view) {
    on_stop_request([] { interrupted = 1; });
    follow_log(
        job.files.log, view, [&] { return job.process.exit_status().has_value(); },
        [] { return interrupted != 0; });
    return job.process.exit_status().has_value();
}

void run(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    const FlowDocument flow = with_values(read_flow(path), options.overrides);
    if (!options.no_check) {
        if (const auto findings = check_flow(flow); has_error(findings)) {
            print_findings(options.name, findings, false);
            command_failed("run", "the flow was not started; --no-check would start it");
        }
    }
    const std::string name = std::filesystem::path(path).filename().string();
    StartedJob job = start_job(name, run_text(flow, CurrentProspect().name()));
    if (options.detach) return say_how_to_go_on(job.files.number);

    LogView view(stdout, style_of_standard_output());
    if (!follow(job, view)) {
        say("\n");
        say_how_to_go_on(job.files.number);
        throw CLI::RuntimeError(EXIT_FAILURE);
    }
    const int status = job.process.wait();
    std::fflush(stdout);
    if (status == 0) {
        say("Job %d is done; its log is '%s'.\n", job.files.number, job.files.log.c_str());
        if (view.reading().end() == LogReading::End::kNone) {
            say_error("That log is not whole: check the disk space of its directory.\n");
        }
        return;
    }
    if (status > 128 && view.reading().end() == LogReading::End::kNone) {
        command_failed("run", "job " + std::to_string(job.files.number) + " was ended by signal " +
                                  std::to_string(status - 128) + "; its log is '" + job.files.log +
                                  "'");
    }
    command_failed("run", "job " + std::to_string(job.files.number) + " failed; its log is '" +
                              job.files.log + "'");
}

}  // namespace

void add_run_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("run", "Run a flow and follow its log");
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    command->add_option("name", options->name, "Name of the flow, or a file with a '/'")
        ->type_name("NAME")
        ->required();
    command->add_option("values", options->overrides, "Values for this run alone")
        ->type_name("ITEM.KEY=VALUE");
    command->add_flag("--no-check", options->no_check, "Start it whatever a check finds");
    command->add_flag("--detach", options->detach, "Come back at once");
    command->callback([options] { run(*options); });
}

}  // namespace halvern
