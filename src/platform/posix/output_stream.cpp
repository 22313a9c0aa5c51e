#include "platform/output_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

static_assert(sizeof(off_t) == 8);

Result<std::FILE*> open_output_stream(const char* path, bool empties, std::int64_t offset) {
    // Without O_NONBLOCK a pipe nobody reads from would hold us here. Not "r+": a stream that may
    // read fills its buffer around the place it is moved to, and then writes from within it.
    const int flags = O_WRONLY | O_CLOEXEC | O_NONBLOCK | (empties ? O_CREAT | O_TRUNC : 0);
    const int file = ::open(path, flags, 0666);
    if (file < 0) return errno == ENXIO ? Fault("it is a pipe") : Fault::of_errno(errno);
    struct stat status {};
    std::FILE* stream = nullptr;
    if (::fstat(file, &status) == 0 && S_ISFIFO(status.st_mode)) {
        ::close(file);
        return Fault("it is a pipe");
    }
    if (::lseek(file, offset, SEEK_SET) >= 0 || offset == 0) stream = ::fdopen(file, "wb");
    if (stream) return stream;
    const int why = errno;
    ::close(file);
    return Fault::of_errno(why);
}

}  // namespace halvern
