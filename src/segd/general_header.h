#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "segd/fields.h"

namespace halvern::segd {

/// What means "look in general header 2" in a count of the first general header.
inline constexpr int kExtended = -1;

/// General header #1: the first 32 bytes of a record. Offsets count from 0.
struct GeneralHeader1 {
    static constexpr std::size_t kSize = kBlockBytes;
    static constexpr std::size_t kF = 0;      ///< file number, 4 BCD digits; FFFF: general header 2
    static constexpr std::size_t kY = 2;      ///< format code, 4 BCD digits
    static constexpr std::size_t kYR = 10;    ///< last two digits of the year, BCD
    static constexpr std::size_t kGHDY = 11;  ///< high half: additional blocks; 3 BCD digits: day
    static constexpr std::size_t kH = 13;     ///< hour, minute, second: BCD
    static constexpr std::size_t kMI = 14;
    static constexpr std::size_t kSE = 15;
    static constexpr std::size_t kM = 16;    ///< manufacturer's code, 2 BCD digits
    static constexpr std::size_t kB = 19;    ///< bytes per scan, 6 BCD digits; multiplexed data
    static constexpr std::size_t kI = 22;    ///< base scan interval, binary, 1/16 ms
    static constexpr std::size_t kZR = 25;   ///< high half: record type; 3 BCD digits: length
    static constexpr std::size_t kSTR = 27;  ///< scan types per record, 2 BCD digits
    static constexpr std::size_t kCS = 28;   ///< channel sets per scan type; FF: general header 2
    static constexpr std::size_t kSK = 29;   ///< sample skew blocks after each scan type
    static constexpr std::size_t kEC = 30;   ///< extended header blocks; FF: general header 2
    static constexpr std::size_t kEX = 31;   ///< external header blocks; FF: general header 2

    int file_number;        ///< or kExtended
    int format;             ///< 8015, 8058, …
    int year;               ///< two digits
    int additional_blocks;  ///< general header blocks after this one, 0 … 15
    int day;                ///< of the year, from 1
    int hour, minute, second;
    int manufacturer;  ///< 0 when the code is not decimal
    int bytes_per_scan;
    int base_interval;  ///< 1/16 ms, above 0
    int record_type;    ///< 8 normal, 2 test
    int record_length;  ///< units of 102.4 ms, or kExtended
    int scan_types;     ///< 1 … 99
    int channel_sets;   ///< descriptors per scan type, or kExtended
    int skew_blocks;
    int extended_blocks;  ///< or kExtended
    int external_blocks;  ///< or kExtended

    /// The header in `bytes`, or nothing when a digit of a field that is used is not decimal, or
    /// when there is no base scan interval or scan type.
    static std::optional<GeneralHeader1> parse(Bytes<kSize> bytes);

    /// Whether these bytes can begin a record, where something else could be as well: a known
    /// format code, times within their bounds and a usual base scan interval.
    static bool plausible(Bytes<kSize> bytes);
};

/// General header #2, from revision 1 on.
struct GeneralHeader2 {
    static constexpr std::size_t kSize = kBlockBytes;
    static constexpr std::size_t kEF = 0;          ///< extended file number, 24 bits
    static constexpr std::size_t kEN = 3;          ///< extended channel sets per scan type, 16 bits
    static constexpr std::size_t kECX = 5;         ///< extended header blocks
    static constexpr std::size_t kEH = 7;          ///< external header blocks
    static constexpr std::size_t kREV = 10;        ///< revision: major, minor
    static constexpr std::size_t kGT = 12;         ///< general trailer blocks
    static constexpr std::size_t kERL = 14;        ///< extended record length, ms, 24 bits
    static constexpr std::size_t kBN = 18;         ///< number of this block: 2
    static constexpr std::size_t kBlockType = 31;  ///< of revision 3, which numbers it here

    int file_number;
    int channel_sets;
    int extended_blocks;
    int external_blocks;
    int revision_major;
    int revision_minor;
    int trailer_blocks;
    int record_length_ms;

    /// Any block of 32 bytes can be read as one.
    static GeneralHeader2 parse(Bytes<kSize> bytes);
    /// Whether a block after the first one is this header and no private block of revision 0.
    static bool is_one(Bytes<kSize> bytes);
    static bool is_revision_3(Bytes<kSize> bytes);
};

/// General header #3 and later ones, one for each source set, from revision 1 on.
struct GeneralHeaderN {
    static constexpr std::size_t kSize = kBlockBytes;
    static constexpr std::size_t kSLN = 3;  ///< source line number: 24 bits signed,
    static constexpr std::size_t kSLF = 6;  ///< its fraction, 16 bits
    static constexpr std::size_t kSPN = 8;  ///< source point number likewise
    static constexpr std::size_t kSPF = 11;
    static constexpr std::size_t kSPI = 13;  ///< source point index
    static constexpr std::size_t kBN = 18;   ///< number of this block: 3 and up
    static constexpr std::size_t kSS = 19;   ///< source set number

    double source_line;
    double source_point;
    int source_index;
    int block_number;
    int source_set;

    static GeneralHeaderN parse(Bytes<kSize> bytes);
};

/// The label that newer tapes begin with, 128 characters.
struct StorageUnitLabel {
    static constexpr std::size_t kSize = 128;
    /// Whether `bytes` begin with one.
    static bool is_one(std::span<const std::byte> bytes);
};

}  // namespace halvern::segd
