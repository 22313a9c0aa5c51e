#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

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
    /// To after the next filemark. 0, or -1 when there is none.
    [[nodiscard]] virtual int skip_file() = 0;
    /// Why nothing can be read from here on, where that is not the end of the data, in words that
    /// can end a sentence; skip_file() may lead on. Else empty.
    virtual std::string trouble() const { return {}; }
    /// Whether the blocks' ends are ends of something.
    virtual bool marks_blocks() const { return true; }
};

/// A tape. A block that cannot be read is passed over.
class TapeBlockSource final : public BlockSource {
public:
    explicit TapeBlockSource(TapeDevice& device) : device_(device) {}
    Status next(std::span<const std::byte>& block) override;
    [[nodiscard]] int skip_file() override;
    /// Where a block can be neither read nor passed.
    std::string trouble() const override { return trouble_; }

private:
    TapeDevice& device_;
    std::string trouble_;
    bool after_filemark_ = false;  // that passing a bad block led over
};

/// A record as a disk file: its bytes end to end, in pieces that mean nothing.
class FileBlockSource final : public BlockSource {
public:
    /// Nothing when the file cannot be read.
    static std::optional<FileBlockSource> open(const std::string& path);
    Status next(std::span<const std::byte>& block) override;
    [[nodiscard]] int skip_file() override;
    std::string trouble() const override;
    bool marks_blocks() const override { return false; }

private:
    explicit FileBlockSource(BlockReader file) : file_(std::move(file)) {}
    BlockReader file_;
};

/// Another source, whose beginning can be heard again.
class RepeatingSource final : public BlockSource {
public:
    explicit RepeatingSource(BlockSource& source) : source_(source) {}
    /// What was heard so far comes once more.
    void repeat() { next_ = 0; }
    /// What comes from now on is not kept, nor what has come again.
    void forget() { remembering_ = false; }
    std::int64_t remembered() const { return bytes_; }

    Status next(std::span<const std::byte>& block) override;
    [[nodiscard]] int skip_file() override;
    std::string trouble() const override;
    bool marks_blocks() const override { return source_.marks_blocks(); }

private:
    struct Heard {
        Status status;
        std::vector<std::byte> block;
    };
    BlockSource& source_;
    std::vector<Heard> heard_;
    std::size_t next_ = 0;  // of heard_, to come again
    std::int64_t bytes_ = 0;
    bool remembering_ = true;
};

}  // namespace halvern::segd
