#include "platform/block_writer.h"

#include <cerrno>
#include <cstring>

#include "platform/file_position.h"

namespace halvern {

namespace {

// Large enough that calls into the system do not count, small enough to stay in the cache between
// the copy into it and the copy out of it.
constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

const char* stream_mode(BlockWriter::Mode mode) {
    switch (mode) {
        case BlockWriter::Mode::kAppend:
            return "ab";
        case BlockWriter::Mode::kUpdate:
            return "r+b";
        default:
            return "wb";
    }
}

}  // namespace

int BlockWriter::open(const std::string& path, Mode mode, std::int64_t offset) {
    static_cast<void>(finish());
    failed_ = false;
    errno = 0;
    stream_.reset(std::fopen(path.c_str(), stream_mode(mode)));
    if (stream_) {
        if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes);
        std::setvbuf(stream_.get(), buffer_.get(), _IOFBF, kBufferBytes);
        if (offset == 0 || seek_stream(stream_.get(), offset) == 0) return 0;
    }
    fail();
    stream_.reset();
    return -1;
}

std::size_t BlockWriter::write(std::span<const std::byte> bytes) {
    if (!stream_ || failed_) return 0;
    errno = 0;
    const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stream_.get());
    if (written < bytes.size()) fail();
    return written;
}

int BlockWriter::flush() {
    if (stream_ && !failed_ && std::fflush(stream_.get()) != 0) fail();
    return failed_ ? -1 : 0;
}

int BlockWriter::finish() {
    if (!stream_) return 0;
    errno = 0;
    if (std::fclose(stream_.release()) != 0) fail();
    return failed_ ? -1 : 0;
}

void BlockWriter::fail() {
    if (!failed_) error_ = errno;
    failed_ = true;
}

std::string BlockWriter::reason() const {
    return error_ != 0 ? std::strerror(error_) : "unknown reason";
}

}  // namespace halvern
