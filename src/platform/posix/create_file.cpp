#include "platform/create_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace halvern {

std::error_code create_exclusively(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0) return {errno, std::generic_category()};
    ::close(file);
    return {};
}

}  // namespace halvern
