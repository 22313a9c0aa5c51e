#include "trace/file_kind.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "trace/big_endian.h"
#include "trace/ebcdic.h"
#include "trace/sample_format.h"

namespace halvern {

namespace {

constexpr std::byte kLineEnd{'\n'};

bool has_text(std::span<const std::byte> bytes, std::size_t offset, std::string_view text) {
    return bytes.size() >= offset + text.size() &&
           std::ranges::equal(bytes.subspan(offset, text.size()), std::as_bytes(std::span(text)));
}

bool is_decimal(std::span<const std::byte> bytes) {
    return std::ranges::all_of(bytes, [](std::byte b) { return get_bcd(Bytes<1>(&b, 1)) >= 0; });
}

std::uint32_t little_endian(std::span<const std::byte> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8 | std::to_integer<std::uint32_t>(bytes[i]);
    return value;
}

/// Whether blocks between their lengths begin here; a block's length precedes and follows it.
bool begins_tape_image(BlockReader& file, std::span<const std::byte> bytes) {
    constexpr std::uint32_t kLongestBlock = 0xFFFFFF, kBad = 0x80000000;
    if (bytes.size() < 8) return false;
    const std::uint32_t word = little_endian(bytes);
    const std::int64_t length = word & kLongestBlock;
    if (length == 0 || (word & ~kLongestBlock & ~kBad) != 0) return false;
    for (const std::int64_t pad : {length % 2, std::int64_t{0}}) {
        file.seek(4 + length + pad);
        const std::span<const std::byte> after = file.next(4);
        if (after.size() == 4 && little_endian(after) == word) return true;
    }
    return false;
}

/// What a file of characters is, by the records that its lines begin as.
FileKind kind_of_text(std::span<const std::byte> bytes) {
    std::int64_t lines = 0, records = 0;
    for (auto line = bytes.begin(); line != bytes.end(); ++lines) {
        const auto end = std::find(line, bytes.end(), kLineEnd);
        const char first = std::to_integer<char>(*line);
        const bool numbered = end - line >= 3 && std::to_integer<char>(line[1]) >= '0' &&
                              std::to_integer<char>(line[1]) <= '9';
        constexpr std::ptrdiff_t kColumns = 60;  // of a point or relation record, at least
        if (first == 'H' ? numbered
                         : (first == 'S' || first == 'R' || first == 'X') && end - line >= kColumns)
            ++records;
        line = end == bytes.end() ? end : end + 1;
    }
    return records > 0 && records * 2 > lines ? FileKind::kSpsText : FileKind::kText;
}

}  // namespace

bool begins_storage_label(std::span<const std::byte> bytes) {
    constexpr std::size_t kSize = 128;
    return bytes.size() >= kSize && has_text(bytes, 4, "SD") && has_text(bytes, 9, "RECORD");
}

bool begins_segd(std::span<const std::byte> bytes) {
    if (begins_storage_label(bytes)) return true;
    constexpr std::size_t kGeneralHeader = 32;
    constexpr std::uint32_t kFormats[] = {0x8015, 0x8022, 0x8024, 0x8036, 0x8038,
                                          0x8042, 0x8044, 0x8048, 0x8058};
    if (bytes.size() < kGeneralHeader) return false;
    const std::span<const std::byte> year_to_second = bytes.subspan(10, 6);
    const bool file_number = is_decimal(bytes.first(2)) || get_u16(bytes.first<2>()) == 0xFFFF;
    // The second digit of the day's first byte counts days, the first one header blocks.
    return file_number && std::ranges::count(kFormats, get_u16(bytes.subspan<2, 2>())) > 0 &&
           is_decimal(year_to_second.first(1)) && is_decimal(year_to_second.last(4));
}

bool is_text(std::span<const std::byte> bytes) {
    const auto share = [&](auto&& character_of) {
        return std::ranges::count_if(bytes, [&](std::byte byte) {
            const int c = std::to_integer<int>(character_of(byte));
            return c >= ' ' && c <= '~';
        });
    };
    const auto ebcdic = share([](std::byte byte) { return ebcdic_to_ascii(byte); });
    const auto ascii = share([](std::byte byte) { return byte; });
    return std::max(ebcdic, ascii) * 10 >= static_cast<std::ptrdiff_t>(bytes.size()) * 9;
}

FileKind file_kind(BlockReader& file) {
    file.seek(0);
    std::array<std::byte, kLineHeaderBytes> first;
    const std::span<const std::byte> read =
        file.next(static_cast<std::size_t>(std::min<std::int64_t>(file.size(), kLineHeaderBytes)));
    std::ranges::copy(read, first.begin());
    const std::span<const std::byte> bytes = std::span(first).first(read.size());
    if (has_text(bytes, 0, kDatasetMagic)) return FileKind::kDataset;
    if (begins_tape_image(file, bytes)) return FileKind::kTapeImage;
    if (begins_segd(bytes)) return FileKind::kSegd;
    // A text header has no line ends, and is followed by a binary header.
    const auto is_character = [](std::byte byte) {
        const int c = std::to_integer<int>(byte);
        return (c >= ' ' && c <= '~') || c == '\n' || c == '\r' || c == '\t';
    };
    if (std::ranges::all_of(bytes, is_character) && std::ranges::count(bytes, kLineEnd) > 0) {
        return kind_of_text(bytes);
    }
    return FileKind::kOther;
}

}  // namespace halvern
