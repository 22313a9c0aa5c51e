#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace halvern {

/// A program that was started on its own: it has no terminal, inherits no files, and goes on when
/// this process, or the session it runs in, ends. Letting go of the object leaves it running.
class DetachedProcess {
public:
    /// Starts the program at path arguments[0]. On Windows the arguments travel as
    /// join_command_line(arguments, bare). Nothing, with the reason in `error`, when it cannot be
    /// started.
    [[nodiscard]] static std::optional<DetachedProcess> start(
        const std::vector<std::string>& arguments, std::error_code& error,
        std::size_t bare = std::string::npos);

    ~DetachedProcess() { release(); }
    DetachedProcess(DetachedProcess&& other) noexcept
        : id_(other.id_), handle_(std::exchange(other.handle_, 0)), status_(other.status_) {}
    DetachedProcess& operator=(DetachedProcess&& other) noexcept {
        std::swap(id_, other.id_);
        std::swap(handle_, other.handle_);
        std::swap(status_, other.status_);
        return *this;
    }

    std::int64_t id() const { return id_; }  ///< the system's number of it

    /// Its exit status, or nothing while it runs. One that a signal ended has 128 + the signal; -1
    /// when it has ended and the system does not say how.
    std::optional<int> exit_status();

    /// Waits for its end and gives its exit status.
    int wait();

private:
    DetachedProcess(std::int64_t id, std::intptr_t handle) : id_(id), handle_(handle) {}
    void release();

    std::int64_t id_;
    std::intptr_t handle_;  // on Windows
    std::optional<int> status_;
};

/// The number of this very process.
std::int64_t current_process_id();

/// Whether a process of that number runs, whoever started it.
bool process_is_running(std::int64_t id);

/// Whether the running process of that number was started with this argument: numbers are used
/// again, and another program may have it by now. True where the system does not say.
bool process_has_argument(std::int64_t id, const std::string& argument);

/// Asks that process to end (on Windows: ends it). False when there is none, or it is not ours.
bool stop_process(std::int64_t id);

}  // namespace halvern
