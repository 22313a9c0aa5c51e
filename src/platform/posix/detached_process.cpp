#include "platform/detached_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <limits>

namespace halvern {

namespace {

// Nothing while the process runs and `options` say not to wait; -1 when its status is lost.
std::optional<int> status_of(std::int64_t id, int options) {
    int status = 0;
    pid_t ended = 0;
    do {
        ended = ::waitpid(static_cast<pid_t>(id), &status, options);
    } while (ended < 0 && errno == EINTR);
    if (ended == 0) return {};
    if (ended < 0) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// A session of its own without files, with the signals as a program expects to find them.
class Detachment {
public:
    Detachment() {
        posix_spawn_file_actions_init(&files_);
        posix_spawn_file_actions_addopen(&files_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&files_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&files_, STDERR_FILENO + 1);
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int signal : {SIGHUP, SIGINT, SIGPIPE, SIGTERM, SIGCHLD}) {
            sigaddset(&signals, signal);
        }
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Detachment() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&files_);
    }
    Detachment(const Detachment&) = delete;
    Detachment& operator=(const Detachment&) = delete;

    int spawn(pid_t& id, char* const* arguments) const {
        return posix_spawn(&id, arguments[0], &files_, &attributes_, arguments, environ);
    }

private:
    posix_spawn_file_actions_t files_;
    posix_spawnattr_t attributes_;
};

// Ended, but nobody has asked for its status yet: such a process still answers signals.
bool is_zombie(std::int64_t id) {
    std::ifstream file("/proc/" + std::to_string(id) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name_end = line.rfind(')');  // the name before the state may hold anything
    return name_end != std::string::npos && line.compare(name_end, 3, ") Z") == 0;
}

bool is_process_id(std::int64_t id) {  // 0 and negative numbers would name whole groups
    return id > 0 && id <= std::numeric_limits<pid_t>::max();
}

}  // namespace

std::optional<DetachedProcess> DetachedProcess::start(const std::vector<std::string>& arguments,
                                                      std::error_code& error, std::size_t) {
    if (arguments.empty()) {
        error = std::make_error_code(std::errc::invalid_argument);
        return {};
    }
    std::vector<std::string> texts = arguments;
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);

    // Ignored, as whoever started this program may have left it, the status of a child is lost.
    ::signal(SIGCHLD, SIG_DFL);
    pid_t id = 0;
    error = {Detachment().spawn(id, pointers.data()), std::generic_category()};
    if (error) return {};
    return DetachedProcess(id, 0);
}

std::optional<int> DetachedProcess::exit_status() {
    if (!status_) status_ = status_of(id_, WNOHANG);
    return status_;
}

int DetachedProcess::wait() {
    if (!status_) status_ = status_of(id_, 0);
    return status_.value_or(-1);
}

void DetachedProcess::release() {}

std::int64_t current_process_id() { return ::getpid(); }

bool process_is_running(std::int64_t id) {
    if (!is_process_id(id)) return false;
    if (::kill(static_cast<pid_t>(id), 0) != 0 && errno != EPERM) return false;
    return !is_zombie(id);
}

bool process_has_argument(std::int64_t id, const std::string& argument) {
    std::ifstream file("/proc/" + std::to_string(id) + "/cmdline", std::ios::binary);
    if (!file) return process_is_running(id);
    for (std::string text; std::getline(file, text, '\0');) {
        if (text == argument) return true;
    }
    return false;
}

bool stop_process(std::int64_t id) {
    return is_process_id(id) && process_is_running(id) &&
           ::kill(static_cast<pid_t>(id), SIGTERM) == 0;
}

}  // namespace halvern
