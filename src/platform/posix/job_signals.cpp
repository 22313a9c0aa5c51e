#include "platform/job_signals.h"

#include <csignal>

namespace halvern {

namespace {
void (*stop_request)() = nullptr;
void handle_stop(int) { stop_request(); }
}  // namespace

void on_stop_request(void (*request)()) {
    stop_request = request;
    struct sigaction action = {};
    action.sa_handler = handle_stop;
    // Without SA_RESTART: what waits for another program (a pipe to open, an answer to a question)
    // gives up with a fault. Reading and writing files is not interrupted.
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace halvern
