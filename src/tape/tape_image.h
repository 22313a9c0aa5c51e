#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/block_reader.h"
#include "platform/block_writer.h"

namespace halvern {

/// A tape image is a disk file that keeps block boundaries and filemarks, in the SIMH ".tap"
/// layout: a block is its length, the bytes, one pad byte when the length is odd, and the length
/// again; a filemark is a length of 0. Lengths are little-endian 32-bit words. Read besides: images
/// without the pad byte, erase gaps, blocks marked as bad (top bit of the length), the
/// end-of-medium word, and private or descriptive records, which are passed over.
///
/// What is at a place of an image.
enum class TapeImageItem {
    kBlock,
    kBadBlock,  ///< recorded with an error; its bytes may be there
    kFilemark,
    kEndOfData,  ///< the end of the file, or the end-of-medium word
    kFault,      ///< no going on: the file cannot be read here, is cut short, or has lengths that
                 ///< disagree
};

struct TapeImageRecord {
    TapeImageItem item = TapeImageItem::kEndOfData;
    std::int64_t offset = 0;               ///< in the file
    std::span<const std::byte> data = {};  ///< of a block; valid until the reader's next call
};

/// Reads an image in order. Move-only.
class TapeImageReader {
public:
    /// A block's longest length: what a SCSI read can ask for.
    static constexpr int kLongestBlock = 0xFFFFFF;

    /// Nothing when the file is missing, unreadable or not a regular file.
    [[nodiscard]] static std::optional<TapeImageReader> open(const std::string& path);

    /// The next record, which is then passed, except that the end of data and a fault stay.
    TapeImageRecord next();
    /// Where the next record begins; the same for erase gaps and private records before it.
    std::int64_t position() const { return file_.position(); }
    /// `offset` must be one that a record or position() gave.
    void seek(std::int64_t offset) { file_.seek(offset); }
    std::int64_t size() const { return file_.size(); }
    /// What is wrong, after kFault: "the block at byte 3208 is cut short".
    const std::string& fault() const { return fault_; }

private:
    explicit TapeImageReader(BlockReader file) : file_(std::move(file)) {}
    TapeImageRecord at_fault(std::int64_t offset, const char* what);

    BlockReader file_;
    std::string fault_;
};

/// Writes an image, after what is kept of it. Writing is buffered; an error stays and is answered
/// by every later call. Move-only.
class TapeImageWriter {
public:
    /// Cuts the file at byte `keep` (0: starts it anew) and goes on there; makes it when it is
    /// missing.
    static Result<TapeImageWriter> open(const std::string& path, std::int64_t keep);

    /// 0, or -1 for a block without bytes, one beyond TapeImageReader::kLongestBlock, or a write
    /// error.
    [[nodiscard]] int write_block(std::span<const std::byte> block);
    [[nodiscard]] int write_filemark();
    /// Brings everything to the file.
    Fault flush() { return file_->flush(); }
    /// The same, and closes the file, which can still fail where storage is remote or full. Nothing
    /// can be written after it.
    Fault finish() { return file_->finish(); }
    const Fault& fault() const { return file_->fault(); }
    std::int64_t position() const { return position_; }

private:
    explicit TapeImageWriter(std::int64_t keep)
        : file_(std::make_unique<BlockWriter>()), position_(keep) {}
    void put(std::span<const std::byte> bytes);
    void put_word(std::uint32_t word);

    std::unique_ptr<BlockWriter> file_;  // never null
    std::int64_t position_ = 0;
};

}  // namespace halvern
