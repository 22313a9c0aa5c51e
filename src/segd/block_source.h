#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/block_reader.h"

namespace halvern {
class TapeDevice;
}

namespace halvern::segd {

/// Where records come from, block by block.
class BlockSource {
public:
    enum class Status {
        kBlock,
        kNoData,     ///< a filemark, or the end of the data; twice in a row: the end
        kReadError,  ///< one block is lost
    };
    virtual ~BlockSource() = default;

    /// The next block, which stays until the next call.
    virtual Status next(std::span<const std::byte>& block) = 0;
    /// Behind the next filemark. 0, or -1 when there is none.
    [[nodiscard]] virtual int skip_file() = 0;
    /// Whether the blocks' ends are ends of something.
    virtual bool marks_blocks() const { return true; }
};

/// A tape. A block that cannot be read is passed over.
class TapeBlockSource final : public BlockSource {
public:
    explicit TapeBlockSource(TapeDevice& device) : device_(device) {}
    Status next(std::span<const std::byte>& block) override;
    [[nodiscard]] int skip_file() override;
    /// Whether the tape stands in front of a block that can be neither read nor passed. There are
    /// no data then, but their end it is not; skip_file() may lead on.
    bool stuck() const { return stuck_; }

private:
    TapeDevice& device_;
    bool stuck_ = false;
    bool behind_filemark_ = false;  // that passing a bad block led over
};

/// A record as a disk file: its bytes end to end, in pieces that mean nothing.
class FileBlockSource final : public BlockSource {
public:
    /// Nothing when the file cannot be read.
    static std::optional<FileBlockSource> open(const std::string& path);
    Status next(std::span<const std::byte>& block) override;
    [[nodiscard]] int skip_file() override;
    bool marks_blocks() const override { return false; }

private:
    explicit FileBlockSource(BlockReader file) : file_(std::move(file)) {}
    BlockReader file_;
};

}  // namespace halvern::segd
