#include "platform/job_signals.h"

#include <windows.h>

namespace halvern {

namespace {
void (*stop_request)() = nullptr;
BOOL WINAPI handle_stop(DWORD) {
    stop_request();
    return TRUE;
}
}  // namespace

void on_stop_request(void (*request)()) {
    stop_request = request;
    SetConsoleCtrlHandler(handle_stop, TRUE);
}

}  // namespace halvern
