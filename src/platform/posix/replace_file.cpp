#include "platform/replace_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace halvern {

namespace {

std::error_code last_error() { return {errno, std::generic_category()}; }

std::error_code write_all(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return last_error();
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

}  // namespace

std::error_code replace_file(const std::string& path, std::string_view bytes, Reach reach) {
    std::error_code ignored;
    const std::filesystem::path resolved = std::filesystem::canonical(path, ignored);
    const std::string target = resolved.empty() ? path : resolved.string();

    struct stat old {};
    const bool existed = ::stat(target.c_str(), &old) == 0;
    if (existed && S_ISDIR(old.st_mode)) return std::make_error_code(std::errc::is_a_directory);

    const std::string beside = target + ".new" + std::to_string(::getpid());
    const int file = ::open(beside.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) return last_error();
    std::error_code error = write_all(file, bytes);
    if (!error && existed && ::fchmod(file, old.st_mode & 07777) != 0) error = last_error();
    if (!error && reach == Reach::kDisk && ::fsync(file) != 0) error = last_error();
    if (::close(file) != 0 && !error) error = last_error();
    if (!error && ::rename(beside.c_str(), target.c_str()) != 0) error = last_error();
    if (error) ::unlink(beside.c_str());
    return error;
}

}  // namespace halvern
