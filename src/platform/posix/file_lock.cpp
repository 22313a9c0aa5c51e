#include "platform/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

const bool FileLock::kBarsReplacing = false;

Result<FileLock> FileLock::take(const std::string& path, Missing missing) {
    // A file may be replaced between its opening and its locking; the lock of the old one is none.
    for (int attempt = 0; attempt < 100; ++attempt) {
        struct stat named {};
        if (::stat(path.c_str(), &named) != 0) {
            if (errno != ENOENT || missing == Missing::kFault) return Fault::of_errno(errno);
            const int made = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
            if (made < 0 && errno == EEXIST) continue;
            if (made < 0) return Fault::of_errno(errno);
            FileLock lock(made, true);
            if (::flock(made, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK) return lock;
            continue;  // somebody was faster, and has it
        }
        if (S_ISDIR(named.st_mode)) return Fault("it is a directory");
        if (S_ISFIFO(named.st_mode)) return Fault("it is a pipe");
        if (!S_ISREG(named.st_mode)) return FileLock();
        const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK);
        if (file < 0 && errno == ENOENT) continue;
        if (file < 0) return Fault::of_errno(errno);
        FileLock lock(file, false);
        if (::flock(file, LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) break;
            return FileLock();
        }
        struct stat locked {};
        if (::fstat(file, &locked) != 0 || ::stat(path.c_str(), &named) != 0) continue;
        if (locked.st_ino == named.st_ino && locked.st_dev == named.st_dev) return lock;
    }
    return Fault("another job is writing to it",
                 std::make_error_code(std::errc::device_or_resource_busy));
}

void FileLock::release() {
    if (handle_ != kNone) ::close(static_cast<int>(handle_));
    handle_ = kNone;
}

}  // namespace halvern
