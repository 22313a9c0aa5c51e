#include "platform/block_reader.h"

#include <algorithm>
#include <cstring>

namespace halvern {

namespace {
constexpr std::int64_t kStep = 16 * 1024;      // reads are whole steps
constexpr std::int64_t kUsual = 1024 * 1024;   // a block once reading runs on: fits a core's cache
constexpr std::int64_t kLargest = 4 * kUsual;  // the same for long records
}  // namespace

Result<BlockReader> BlockReader::open(const std::string& path) {
    Result<InputFile> file = InputFile::open(path);
    if (!file) return file.fault();
    return BlockReader(std::move(*file));
}

std::span<const std::byte> BlockReader::refill(std::size_t bytes) {
    // What is left of the file bounds what is asked for, whatever a broken count says.
    const std::int64_t left = std::max<std::int64_t>(size() - position_, 0);
    const auto wanted =
        static_cast<std::int64_t>(std::min<std::uint64_t>(bytes, static_cast<std::uint64_t>(left)));
    if (wanted == 0) return {};

    // Passing over a little, as from one trace header to the next, is still reading on.
    const std::int64_t inside = position_ - block_offset_;
    const bool runs_on = inside >= 0 && inside <= block_bytes_ + read_ahead_ / 2;
    const std::int64_t kept = runs_on ? std::max<std::int64_t>(block_bytes_ - inside, 0) : 0;
    if (!runs_on) read_ahead_ = 0;

    const std::int64_t ahead = std::max(wanted, read_ahead_);
    const std::int64_t target = std::min((ahead + kStep - 1) / kStep * kStep, left);
    std::unique_ptr<std::byte[]> larger;
    if (target > capacity_) {
        larger = std::make_unique_for_overwrite<std::byte[]>(static_cast<std::size_t>(target));
        capacity_ = target;
    }
    std::byte* const start = larger ? larger.get() : block_.get();
    if (kept > 0) std::memmove(start, block_.get() + inside, static_cast<std::size_t>(kept));
    if (larger) block_ = std::move(larger);

    block_offset_ = position_;
    block_bytes_ = kept;
    if (kept < target) {
        block_bytes_ += static_cast<std::int64_t>(
            file_.read_at(block_offset_ + kept,
                          {block_.get() + kept, static_cast<std::size_t>(target - kept)}, fault_));
    }
    // Blocks of a few records at least, so that the part record moved to the front stays small.
    read_ahead_ = std::min({2 * target, std::max(kUsual, 4 * wanted), kLargest});

    const std::int64_t got = std::min(wanted, block_bytes_);
    if (got < wanted && !fault_) fault_ = Fault("the file has become shorter");
    if (got == static_cast<std::int64_t>(bytes)) position_ += got;
    return {block_.get(), static_cast<std::size_t>(got)};
}

}  // namespace halvern
