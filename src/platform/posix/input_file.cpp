#include "platform/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

Result<InputFile> InputFile::open(const std::string& path) {
    // Without O_NONBLOCK a pipe nobody writes to would hold us here.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return Fault::of_errno(errno);
    InputFile file(descriptor, 0);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) return Fault::of_errno(errno);
    if (S_ISDIR(status.st_mode)) return Fault("it is a directory");
    if (!S_ISREG(status.st_mode)) return Fault("it is no regular file");
    file.size_ = status.st_size;
    (void)::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return file;
}

std::size_t InputFile::read_at(std::int64_t offset, std::span<std::byte> bytes,
                               Fault& fault) const {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count = ::pread(static_cast<int>(handle_), bytes.data() + done,
                                      bytes.size() - done, offset + static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) fault = Fault::of_errno(errno);
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

void InputFile::close() {
    if (handle_ != kNone) ::close(static_cast<int>(handle_));
    handle_ = kNone;
}

}  // namespace halvern
