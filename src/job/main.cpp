// The job program: runs one flow file, writes one job log, exits 0 or 1.

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "foundation/messages.h"
#include "job/job_runner.h"
#include "platform/command_line.h"

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const std::vector<std::string> arguments = halvern::program_arguments(argc, argv);
    try {
        halvern::RunJob(arguments);
    } catch (const std::exception& failure) {  // memory, above all: the job still says how it ended
        halvern::LogPrint("The job cannot go on: %s\n", failure.what());
        halvern::TerminateJob(halvern::kJobError);
    }
    return EXIT_SUCCESS;
}
