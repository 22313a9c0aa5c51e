#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "trace/big_endian.h"

namespace halvern {

/// What a SCSI device says about its last command, in fixed format. Offsets count from 0.
struct SenseData {
    static constexpr std::size_t kSize = 18;
    static constexpr std::size_t kResponse = 0;     ///< 70 or 71 hex, top bit: residual is valid
    static constexpr std::size_t kFlagsAndKey = 2;  ///< 80 filemark, 40 end of medium, 20 length
    static constexpr std::size_t kResidual = 3;     ///< asked minus done, signed 32-bit
    static constexpr std::size_t kAsc = 12;         ///< additional sense code
    static constexpr std::size_t kAscq = 13;        ///< and its qualifier

    int key = 0;
    int asc = 0;
    int ascq = 0;
    std::int32_t residual = 0;  ///< bytes asked for and not transferred; negative: block was longer
    bool filemark = false;
    bool end_of_medium = false;
    bool wrong_length = false;

    static SenseData parse(Bytes<kSize> bytes);
    std::array<std::byte, kSize> bytes() const;
};

/// The name of a sense key: "NO SENSE" (0) … "MISCOMPARE" (14), "RESERVED" (15). Only the low four
/// bits count.
const char* sense_key_name(int key);

/// "SENSE CODE: MEDIUM ERROR, asc=0x11, ascq=0x0".
std::string describe_sense(const SenseData& sense);

}  // namespace halvern
