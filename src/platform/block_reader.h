#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/input_file.h"

namespace halvern {

/// Reads a regular file in large blocks and hands out consecutive pieces of them without copying.
/// Random access is cheap: a seek inside the block costs nothing, and right after one elsewhere
/// only about what is asked for is read; blocks grow again as reading runs on. Move-only.
class BlockReader {
public:
    /// A fault for a missing, unreadable or non-regular file (a directory, a pipe, a device).
    static Result<BlockReader> open(const std::string& path);

    std::int64_t size() const { return file_.size(); }  ///< bytes, when it was opened

    /// The next `bytes` bytes of the file, valid until the next call. The span is shorter, down to
    /// empty, at the end of the file (as of open), or where reading fails, which fault() tells;
    /// position() then stays where those bytes began.
    std::span<const std::byte> next(std::size_t bytes) {
        const std::int64_t inside = position_ - block_offset_;
        if (inside < 0 || inside > block_bytes_ ||
            bytes > static_cast<std::uint64_t>(block_bytes_ - inside)) {
            return refill(bytes);
        }
        position_ += static_cast<std::int64_t>(bytes);
        return {block_.get() + inside, bytes};
    }

    /// Where the next bytes come from, counted from 0; beyond the end there are none.
    void seek(std::int64_t offset) { position_ = offset < 0 ? 0 : offset; }
    std::int64_t position() const { return position_; }

    /// Why bytes are missing that the file had when it was opened: the system cannot read them, or
    /// the file has become shorter. None while all went well; the end of the file is no fault.
    const Fault& fault() const { return fault_; }

private:
    explicit BlockReader(InputFile file) : file_(std::move(file)) {}
    std::span<const std::byte> refill(std::size_t bytes);

    InputFile file_;
    std::unique_ptr<std::byte[]> block_;  // [capacity_], of which block_bytes_ hold file contents
    std::int64_t capacity_ = 0;
    std::int64_t block_offset_ = 0;  // in the file
    std::int64_t block_bytes_ = 0;
    std::int64_t read_ahead_ = 0;  // bytes the next refill reads at least; 0 after a jump
    std::int64_t position_ = 0;
    Fault fault_;
};

}  // namespace halvern
