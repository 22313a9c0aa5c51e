#include "segd/general_header.h"

#include <algorithm>

#include "trace/file_kind.h"

namespace halvern::segd {

namespace {

constexpr std::byte kEscape{0xFF};

// A two-digit count that all ones send to general header 2.
int get_count(std::byte b) { return b == kEscape ? kExtended : get_bcd(Bytes<1>(&b, 1)); }

bool is_decimal(std::byte b) { return high_nibble(b) <= 9 && low_nibble(b) <= 9; }

}  // namespace

std::optional<GeneralHeader1> GeneralHeader1::parse(Bytes<kSize> bytes) {
    const auto digits = [bytes](std::size_t offset) {
        return get_bcd(Bytes<1>(&bytes[offset], 1));
    };
    const bool file_extended = get_u16(bytes.subspan<kF, 2>()) == 0xFFFF;
    const bool length_extended = low_nibble(bytes[kZR]) == 15 && bytes[kZR + 1] == kEscape;
    const int file = file_extended ? kExtended : get_bcd(bytes.subspan<kF, 2>());
    const int length = length_extended ? kExtended : get_bcd3(bytes.subspan<kZR, 2>());

    const bool decimal =
        (file_extended || file >= 0) && (length_extended || length >= 0) &&
        get_bcd(bytes.subspan<kY, 2>()) >= 0 && get_bcd3(bytes.subspan<kGHDY, 2>()) >= 0 &&
        std::all_of(bytes.begin() + kH, bytes.begin() + kSE + 1, is_decimal) &&
        is_decimal(bytes[kYR]) && is_decimal(bytes[kSTR]) && is_decimal(bytes[kSK]);
    const auto counted = [bytes](std::size_t offset) {
        return bytes[offset] == kEscape || is_decimal(bytes[offset]);
    };
    if (!decimal || !counted(kCS) || !counted(kEC) || !counted(kEX)) return {};

    const GeneralHeader1 header{
        .file_number = file,
        .format = get_bcd(bytes.subspan<kY, 2>()),
        .year = digits(kYR),
        .additional_blocks = high_nibble(bytes[kGHDY]),
        .day = get_bcd3(bytes.subspan<kGHDY, 2>()),
        .hour = digits(kH),
        .minute = digits(kMI),
        .second = digits(kSE),
        .manufacturer = std::max(digits(kM), 0),
        .bytes_per_scan = std::max(get_bcd(bytes.subspan<kB, 3>()), 0),
        .base_interval = std::to_integer<int>(bytes[kI]),
        .record_type = high_nibble(bytes[kZR]),
        .record_length = length,
        .scan_types = digits(kSTR),
        .channel_sets = get_count(bytes[kCS]),
        .skew_blocks = digits(kSK),
        .extended_blocks = get_count(bytes[kEC]),
        .external_blocks = get_count(bytes[kEX]),
    };
    if (header.base_interval == 0 || header.scan_types == 0) return {};
    return header;
}

bool GeneralHeader1::plausible(Bytes<kSize> bytes) {
    constexpr int kFormats[] = {8015, 8022, 8024, 8036, 8038, 8042, 8044, 8048, 8058};
    constexpr int kIntervals[] = {0x02, 0x04, 0x08, 0x10, 0x20, 0x40};
    const std::optional<GeneralHeader1> header = parse(bytes);
    return header && std::ranges::count(kFormats, header->format) > 0 &&
           std::ranges::count(kIntervals, header->base_interval) > 0 && header->hour < 24 &&
           header->minute < 60 && header->second < 60 && header->day >= 1 && header->day <= 366;
}

GeneralHeader2 GeneralHeader2::parse(Bytes<kSize> bytes) {
    const auto word = [](Bytes<2> b) { return static_cast<int>(get_u16(b)); };
    return {.file_number = static_cast<int>(get_u24(bytes.subspan<kEF, 3>())),
            .channel_sets = word(bytes.subspan<kEN, 2>()),
            .extended_blocks = word(bytes.subspan<kECX, 2>()),
            .external_blocks = word(bytes.subspan<kEH, 2>()),
            .revision_major = std::to_integer<int>(bytes[kREV]),
            .revision_minor = std::to_integer<int>(bytes[kREV + 1]),
            .trailer_blocks = word(bytes.subspan<kGT, 2>()),
            .record_length_ms = static_cast<int>(get_u24(bytes.subspan<kERL, 3>()))};
}

bool GeneralHeader2::is_one(Bytes<kSize> bytes) {
    const int major = std::to_integer<int>(bytes[kREV]);
    return bytes[kBN] == std::byte{2} && major >= 1 && major <= 3;
}

bool GeneralHeader2::is_revision_3(Bytes<kSize> bytes) {
    return bytes[kREV] == std::byte{3} &&
           (bytes[kBlockType] == std::byte{2} || bytes[kBN] == std::byte{2});
}

GeneralHeaderN GeneralHeaderN::parse(Bytes<kSize> bytes) {
    return {.source_line = get_position(bytes.subspan<kSLN, 3>(), bytes.subspan<kSLF, 2>()),
            .source_point = get_position(bytes.subspan<kSPN, 3>(), bytes.subspan<kSPF, 2>()),
            .source_index = std::to_integer<int>(bytes[kSPI]),
            .block_number = std::to_integer<int>(bytes[kBN]),
            .source_set = std::to_integer<int>(bytes[kSS])};
}

bool StorageUnitLabel::is_one(std::span<const std::byte> bytes) {
    return begins_storage_label(bytes);
}

}  // namespace halvern::segd
