#include "segd/block_stream.h"

namespace halvern::segd {

using Status = BlockSource::Status;

std::span<const std::byte> BlockStream::front(std::size_t count) {
    // What was dropped is moved out once it is the larger part, so that no byte moves often however
    // far ahead one looks.
    const std::size_t left = bytes_.size() - begin_;
    if (left < count && begin_ >= left && end_ == Status::kBlock) {
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
    pass_starts();
}

void BlockStream::pass_starts() {
    for (; first_start_ < starts_.size() && starts_[first_start_] <= offset_; ++first_start_) {
        last_start_ = starts_[first_start_];
    }
    if (first_start_ == starts_.size()) {
        starts_.clear();
        first_start_ = 0;
    }
}

bool BlockStream::at_block_start() {
    pass_starts();
    return last_start_ == offset_;
}

void BlockStream::restart() {
    bytes_.clear();
    starts_.clear();
    begin_ = first_start_ = 0;
    offset_ = 0;
    last_start_ = -1;
    end_ = Status::kBlock;
}

std::size_t BlockStream::to_next_block() {
    if (!source_.marks_blocks()) return 0;
    pass_starts();
    // Everything that was fetched lies in this block: the next one begins after it.
    if (first_start_ == starts_.size() && !fetch()) return 0;
    return static_cast<std::size_t>(starts_[first_start_] - offset_);
}

}  // namespace halvern::segd
