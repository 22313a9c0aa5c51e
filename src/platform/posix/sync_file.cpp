#include "platform/sync_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

Fault sync_file(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) return Fault::of_errno(errno);
    const Fault fault = ::fsync(file) == 0 ? Fault() : Fault::of_errno(errno);
    ::close(file);
    return fault;
}

}  // namespace halvern
