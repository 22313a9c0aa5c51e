#include "segd/block_stream.h"

namespace halvern::segd {

using Status = BlockSource::Status;

std::span<const std::byte> BlockStream::front(std::size_t count) {
    if (bytes_.size() - begin_ < count && begin_ > 0) {
        bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(begin_));
        begin_ = 0;
    }
    while (bytes_.size() - begin_ < count && fetch()) {
    }
    const std::span<const std::byte> there = std::span(bytes_).subspan(begin_);
    return there.first(std::min(count, there.size()));
}

bool BlockStream::fetch() {
    if (end_ != Status::kBlock) return false;
    std::span<const std::byte> block;
    end_ = source_.next(block);
    if (end_ != Status::kBlock) return false;
    push(block);
    return true;
}

void BlockStream::push(std::span<const std::byte> block) {
    if (source_.marks_blocks()) {
        starts_.push_back(offset_ + static_cast<std::int64_t>(bytes_.size() - begin_));
    }
    bytes_.insert(bytes_.end(), block.begin(), block.end());
}

void BlockStream::drop(std::size_t count) {
    begin_ += count;
    offset_ += static_cast<std::int64_t>(count);
    while (first_start_ < starts_.size() && starts_[first_start_] <= offset_) ++first_start_;
    if (first_start_ == starts_.size()) {
        starts_.clear();
        first_start_ = 0;
    }
}

void BlockStream::restart() {
    bytes_.clear();
    starts_.clear();
    begin_ = first_start_ = 0;
    offset_ = 0;
    end_ = Status::kBlock;
}

std::size_t BlockStream::to_next_block() {
    if (!source_.marks_blocks()) return 0;
    const auto lies_ahead = [this](std::int64_t start) { return start > offset_; };
    while (first_start_ < starts_.size() && !lies_ahead(starts_[first_start_])) ++first_start_;
    // Everything that was fetched lies in this block: the next one begins behind it.
    if (first_start_ == starts_.size() && !fetch()) return 0;
    return static_cast<std::size_t>(starts_[first_start_] - offset_);
}

}  // namespace halvern::segd
