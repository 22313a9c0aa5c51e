#include "tape/sense.h"

#include <cstdio>

namespace halvern {

namespace {

constexpr std::byte kFilemarkFlag{0x80};
constexpr std::byte kEndOfMediumFlag{0x40};
constexpr std::byte kWrongLengthFlag{0x20};
constexpr std::byte kCurrentWithResidual{0xF0};

}  // namespace

SenseData SenseData::parse(Bytes<kSize> bytes) {
    const std::byte flags = bytes[kFlagsAndKey];
    const auto set = [flags](std::byte flag) { return (flags & flag) != std::byte{}; };
    return {.key = std::to_integer<int>(flags & std::byte{0x0F}),
            .asc = std::to_integer<int>(bytes[kAsc]),
            .ascq = std::to_integer<int>(bytes[kAscq]),
            .residual = get_i32(bytes.subspan<kResidual, 4>()),
            .filemark = set(kFilemarkFlag),
            .end_of_medium = set(kEndOfMediumFlag),
            .wrong_length = set(kWrongLengthFlag)};
}

std::array<std::byte, SenseData::kSize> SenseData::bytes() const {
    std::array<std::byte, kSize> bytes{};
    bytes[kResponse] = kCurrentWithResidual;
    bytes[kFlagsAndKey] = static_cast<std::byte>(key & 0x0F) |
                          (filemark ? kFilemarkFlag : std::byte{}) |
                          (end_of_medium ? kEndOfMediumFlag : std::byte{}) |
                          (wrong_length ? kWrongLengthFlag : std::byte{});
    put_i32(MutableBytes<kSize>(bytes).subspan<kResidual, 4>(), residual);
    bytes[7] = std::byte{kSize - 8};  // bytes that follow
    bytes[kAsc] = static_cast<std::byte>(asc);
    bytes[kAscq] = static_cast<std::byte>(ascq);
    return bytes;
}

const char* sense_key_name(int key) {
    static constexpr const char* kNames[16] = {
        "NO SENSE",          "RECOVERED ERROR", "NOT READY",      "MEDIUM ERROR",
        "HARDWARE ERROR",    "ILLEGAL REQUEST", "UNIT ATTENTION", "DATA PROTECT",
        "BLANK CHECK",       "VENDOR SPECIFIC", "COPY ABORTED",   "ABORTED COMMAND",
        "SEARCH DATA EQUAL", "VOLUME OVERFLOW", "MISCOMPARE",     "RESERVED"};
    return kNames[key & 0x0F];
}

std::string describe_sense(const SenseData& sense) {
    char text[80];
    std::snprintf(text, sizeof text, "SENSE CODE: %s, asc=0x%x, ascq=0x%x",
                  sense_key_name(sense.key), static_cast<unsigned>(sense.asc),
                  static_cast<unsigned>(sense.ascq));
    return text;
}

}  // namespace halvern
