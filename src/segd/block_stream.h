#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "segd/block_source.h"

namespace halvern::segd {

/// The blocks of one tape file put end to end, as far as they are looked at.
class BlockStream {
public:
    explicit BlockStream(BlockSource& source) : source_(source) {}

    /// The next `count` bytes, which stay until the next call of any kind but drop(). Fewer: the
    /// file ends there, or a block could not be read; end() tells.
    std::span<const std::byte> front(std::size_t count);
    /// Passes `count` bytes that front() has shown.
    void drop(std::size_t count);
    /// What the file was found to end with; kBlock: it goes on.
    BlockSource::Status end() const { return end_; }

    /// Empties the stream and goes on with what the source gives next: another file, or what
    /// follows a lost block.
    void restart();
    /// Puts a block before what the source gives next; the stream must be empty.
    void push(std::span<const std::byte> block);
    /// Bytes from here to the start of the next tape block, or 0 when no further one is there or
    /// the source's blocks mean nothing.
    std::size_t to_next_block();
    /// Bytes from here to the end of the last block of the file, when to_next_block() found none.
    std::size_t rest_of_file() const { return bytes_.size() - begin_; }
    /// Whether a tape block begins here.
    bool at_block_start();

private:
    bool fetch();
    void pass_starts();

    BlockSource& source_;
    std::vector<std::byte> bytes_;
    std::size_t begin_ = 0;             // of what has not been dropped, in bytes_
    std::int64_t offset_ = 0;           // of begin_ in the stream
    std::vector<std::int64_t> starts_;  // stream offsets at which blocks begin
    std::size_t first_start_ = 0;       // in starts_: the first that may lie ahead
    std::int64_t last_start_ = -1;      // the last that does not; -1: none
    BlockSource::Status end_ = BlockSource::Status::kBlock;
};

}  // namespace halvern::segd
