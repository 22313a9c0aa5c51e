#include "segy/segy_writer.h"

#include <cerrno>
#include <cstring>
#include <limits>

namespace halvern {

namespace {

// Large enough that calls into the system do not count, small enough to stay in the cache between
// the copy into it and the copy out of it.
constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

const char* stream_mode(SegyWriter::Mode mode) {
    switch (mode) {
        case SegyWriter::Mode::kAppend:
            return "ab";
        case SegyWriter::Mode::kUpdate:
            return "r+b";
        default:
            return "wb";
    }
}

}  // namespace

int SegyWriter::open(const std::string& path, Mode mode, std::int64_t offset) {
    static_cast<void>(finish());
    failed_ = false;
    errno = 0;
    stream_.reset(std::fopen(path.c_str(), stream_mode(mode)));
    if (stream_) {
        if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes);
        std::setvbuf(stream_.get(), buffer_.get(), _IOFBF, kBufferBytes);
    }
    const bool reachable = offset >= 0 && offset <= std::numeric_limits<long>::max();
    if (stream_ &&
        (offset == 0 ||
         (reachable && std::fseek(stream_.get(), static_cast<long>(offset), SEEK_SET) == 0))) {
        return 0;
    }
    error_ = errno;
    stream_.reset();
    return -1;
}

std::size_t SegyWriter::write(std::span<const std::byte> bytes) {
    if (!stream_ || failed_) return 0;
    errno = 0;
    const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stream_.get());
    if (written < bytes.size()) {
        error_ = errno;
        failed_ = true;
    }
    return written;
}

int SegyWriter::write_line_header(const LineHeader& line) {
    return write(line.bytes()) == kLineHeaderBytes ? 0 : -1;
}

std::size_t SegyWriter::write_record(std::span<const std::byte> record) { return write(record); }

int SegyWriter::finish() {
    if (!stream_) return 0;
    errno = 0;
    if (std::fclose(stream_.release()) != 0 && !failed_) {
        error_ = errno;
        failed_ = true;
    }
    return failed_ ? -1 : 0;
}

std::string SegyWriter::reason() const {
    return error_ != 0 ? std::strerror(error_) : "unknown reason";
}

}  // namespace halvern
