#include "tape/tape_image.h"

#include <array>
#include <filesystem>
#include <utility>

namespace halvern {

namespace {

constexpr std::uint32_t kFilemarkWord = 0;
constexpr std::uint32_t kEndOfMedium = 0xFFFFFFFF;
constexpr std::uint32_t kEraseGap = 0xFFFFFFFE;
constexpr std::uint32_t kHalfGap = 0xFFFEFFFF;  // a gap whose first half was written over

// The top four bits of a word tell what it is.
enum RecordClass : std::uint32_t {
    kGood = 0,
    kPrivateMarker = 7,
    kBad = 8,
    kStandardMarker = 15,
};

std::uint32_t get_word(std::span<const std::byte> b) {
    return std::to_integer<std::uint32_t>(b[0]) | std::to_integer<std::uint32_t>(b[1]) << 8 |
           std::to_integer<std::uint32_t>(b[2]) << 16 | std::to_integer<std::uint32_t>(b[3]) << 24;
}

}  // namespace

std::optional<TapeImageReader> TapeImageReader::open(const std::string& path) {
    Result<BlockReader> file = BlockReader::open(path);
    if (!file) return {};
    return TapeImageReader(std::move(*file));
}

TapeImageRecord TapeImageReader::at_fault(std::int64_t offset, const char* what) {
    // Bytes that the system did not give make any record look wrong.
    fault_ = "the record at byte " + std::to_string(offset) + ' ' +
             (file_.fault() ? "cannot be read: " + file_.fault().reason() : what);
    file_.seek(offset);
    return {.item = TapeImageItem::kFault, .offset = offset};
}

TapeImageRecord TapeImageReader::next() {
    for (;;) {
        const std::int64_t offset = file_.position();
        const std::span<const std::byte> head = file_.next(4);
        if (file_.fault()) return at_fault(offset, "");
        if (head.empty()) return {.item = TapeImageItem::kEndOfData, .offset = offset};
        if (head.size() < 4) return at_fault(offset, "is cut short");
        const std::uint32_t word = get_word(head);
        const std::uint32_t record_class = word >> 28;
        const std::uint32_t length = word & 0x0FFFFFFF;

        if (word == kFilemarkWord) return {.item = TapeImageItem::kFilemark, .offset = offset};
        if (word == kEraseGap || record_class == kPrivateMarker) continue;
        if (word == kHalfGap) {
            file_.seek(offset + 2);
            continue;
        }
        if (word == kEndOfMedium) {
            file_.seek(offset);
            return {.item = TapeImageItem::kEndOfData, .offset = offset};
        }
        if (record_class == kStandardMarker) return at_fault(offset, "is an unknown marker");
        if (record_class == kBad && length == 0) {
            return {.item = TapeImageItem::kBadBlock, .offset = offset};
        }
        if (length > kLongestBlock) return at_fault(offset, "is longer than a tape block can be");

        const std::uint32_t pad = length % 2;
        if (file_.size() - file_.position() < std::int64_t{length} + 4) {
            return at_fault(offset, "is cut short");
        }
        std::span<const std::byte> rest = file_.next(length + pad + 4);
        // The last block of an image without pad bytes ends one byte earlier.
        if (rest.empty() || rest.size() < length + 4) {
            rest = file_.next(length + 4);
            if (rest.size() < length + 4) return at_fault(offset, "cannot be read");
        }
        const bool padded =
            rest.size() == length + pad + 4 && get_word(rest.subspan(length + pad)) == word;
        if (!padded && get_word(rest.subspan(length)) != word) {
            return at_fault(offset, "has two lengths that disagree");
        }
        if (!padded)
            file_.seek(offset + 8 + length);
        else
            file_.seek(offset + 8 + length + pad);
        if (record_class != kGood && record_class != kBad) continue;
        return {.item = record_class == kGood ? TapeImageItem::kBlock : TapeImageItem::kBadBlock,
                .offset = offset,
                .data = rest.first(length)};
    }
}

Result<TapeImageWriter> TapeImageWriter::open(const std::string& path, std::int64_t keep) {
    if (keep > 0) {
        std::error_code error;
        std::filesystem::resize_file(path, static_cast<std::uintmax_t>(keep), error);
        if (error) return Fault::of_system(error);
    }
    TapeImageWriter writer(keep);
    using Mode = BlockWriter::Mode;
    Fault fault = writer.file_->open(path, keep > 0 ? Mode::kUpdate : Mode::kCreate, keep);
    if (fault) return fault;
    return writer;
}

void TapeImageWriter::put(std::span<const std::byte> bytes) {
    position_ += static_cast<std::int64_t>(file_->write(bytes));
}

void TapeImageWriter::put_word(std::uint32_t word) {
    const std::array bytes = {static_cast<std::byte>(word), static_cast<std::byte>(word >> 8),
                              static_cast<std::byte>(word >> 16),
                              static_cast<std::byte>(word >> 24)};
    put(bytes);
}

int TapeImageWriter::write_block(std::span<const std::byte> block) {
    if (block.empty() || block.size() > TapeImageReader::kLongestBlock) return -1;
    const auto length = static_cast<std::uint32_t>(block.size());
    put_word(length);
    put(block);
    if (length % 2) put(std::array{std::byte{}});
    put_word(length);
    return file_->fault() ? -1 : 0;
}

int TapeImageWriter::write_filemark() {
    put_word(kFilemarkWord);
    return file_->fault() ? -1 : 0;
}

}  // namespace halvern
