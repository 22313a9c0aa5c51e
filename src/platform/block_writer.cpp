#include "platform/block_writer.h"

#include <cerrno>

#include "platform/output_stream.h"

namespace halvern {

namespace {

// Large enough that calls into the system do not count, small enough to stay in the cache between
// the copy into it and the copy out of it.
constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

}  // namespace

Fault BlockWriter::open(const std::string& path, Mode mode, std::int64_t offset) {
    static_cast<void>(finish());
    fault_ = {};
    waiting_ = 0;
    const auto stream = open_output_stream(path.c_str(), mode == Mode::kCreate, offset);
    if (!stream) return fault_ = stream.fault();
    stream_.reset(*stream);
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<char[]>(kBufferBytes);
    std::setvbuf(stream_.get(), buffer_.get(), _IOFBF, kBufferBytes);
    return {};
}

bool BlockWriter::has_room(std::size_t bytes) const { return bytes <= kBufferBytes - waiting_; }

std::size_t BlockWriter::write(std::span<const std::byte> bytes) {
    if (!stream_ || (!has_room(bytes.size()) && flush()) || fault_) return 0;
    const std::size_t written = std::fwrite(bytes.data(), 1, bytes.size(), stream_.get());
    if (written < bytes.size()) fail(errno);
    waiting_ += written;
    // The stream keeps the rest of a piece larger than its buffer.
    if (waiting_ > kBufferBytes) static_cast<void>(flush());
    return written;
}

Fault BlockWriter::flush() {
    if (stream_ && !fault_ && std::fflush(stream_.get()) != 0) fail(errno);
    waiting_ = 0;
    return fault_;
}

Fault BlockWriter::finish() {
    if (!stream_) return {};
    if (std::fclose(stream_.release()) != 0) fail(errno);
    return fault_;
}

void BlockWriter::fail(int code) {
    if (!fault_) fault_ = Fault::of_errno(code);
}

}  // namespace halvern
