#include "platform/detached_process.h"

#include <windows.h>

#include <limits>

#include "platform/command_line.h"

namespace halvern {

namespace {

HANDLE as_handle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

std::optional<int> status_of(HANDLE process, DWORD milliseconds) {
    if (WaitForSingleObject(process, milliseconds) != WAIT_OBJECT_0) return {};
    DWORD status = 0;
    GetExitCodeProcess(process, &status);
    return static_cast<int>(status);
}

HANDLE open_process(std::int64_t id, DWORD rights) {
    if (id <= 0 || id > std::numeric_limits<DWORD>::max()) return nullptr;
    return OpenProcess(rights, FALSE, static_cast<DWORD>(id));
}

}  // namespace

std::optional<DetachedProcess> DetachedProcess::start(const std::vector<std::string>& arguments,
                                                      std::error_code& error, std::size_t bare) {
    if (arguments.empty()) {
        error = std::make_error_code(std::errc::invalid_argument);
        return {};
    }
    std::string line = join_command_line(arguments, bare);
    STARTUPINFOA start_up{};
    GetStartupInfoA(&start_up);
    PROCESS_INFORMATION process{};
    if (!CreateProcessA(arguments[0].c_str(), line.data(), nullptr, nullptr, FALSE,
                        DETACHED_PROCESS | NORMAL_PRIORITY_CLASS, nullptr, nullptr, &start_up,
                        &process)) {
        error = {static_cast<int>(GetLastError()), std::system_category()};
        return {};
    }
    CloseHandle(process.hThread);
    error.clear();
    return DetachedProcess(process.dwProcessId, reinterpret_cast<std::intptr_t>(process.hProcess));
}

std::optional<int> DetachedProcess::exit_status() {
    if (!status_) status_ = status_of(as_handle(handle_), 0);
    return status_;
}

int DetachedProcess::wait() {
    if (!status_) status_ = status_of(as_handle(handle_), INFINITE);
    return status_.value_or(-1);
}

void DetachedProcess::release() {
    if (handle_) CloseHandle(as_handle(handle_));
    handle_ = 0;
}

std::int64_t current_process_id() { return GetCurrentProcessId(); }

bool process_is_running(std::int64_t id) {
    const HANDLE process = open_process(id, SYNCHRONIZE);
    if (!process) return false;
    const bool running = WaitForSingleObject(process, 0) == WAIT_TIMEOUT;
    CloseHandle(process);
    return running;
}

bool process_has_argument(std::int64_t id, const std::string&) { return process_is_running(id); }

bool stop_process(std::int64_t id) {
    const HANDLE process = open_process(id, PROCESS_TERMINATE);
    if (!process) return false;
    const bool ended = TerminateProcess(process, 1) != 0;
    CloseHandle(process);
    return ended;
}

}  // namespace halvern
