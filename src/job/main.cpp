// The job program: runs one flow file, writes one job log, exits 0 or 1.

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "foundation/messages.h"
#include "job/job_runner.h"
#include "platform/command_line.h"

namespace {

// Set free when the job cannot go on, so that there is memory to end it in order.
std::unique_ptr<char[]> reserve;

void log_reason(std::exception_ptr failure) {
    reserve.reset();
    try {
        if (failure) std::rethrow_exception(std::move(failure));
    } catch (const std::bad_alloc&) {
        halvern::LogPrint("The job cannot go on: there is not enough memory.\n");
    } catch (const std::exception& known) {
        halvern::LogPrint("The job cannot go on: %s.\n", known.what());
    }
}

// An exception out of a destructor, where nobody can catch it. The objects that it leaves half
// destroyed are not touched again; what the writers hold is written.
[[noreturn]] void on_terminate() {
    log_reason(std::current_exception());
    (void)halvern::FinishJob(halvern::kJobError);
    std::fflush(nullptr);
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::set_terminate(on_terminate);
    try {
        reserve = std::make_unique_for_overwrite<char[]>(std::size_t{1} << 20);
        halvern::RunJob(halvern::program_arguments(argc, argv));
    } catch (...) {
        log_reason(std::current_exception());
        halvern::TerminateJob(halvern::kJobError);
    }
    return EXIT_SUCCESS;
}
