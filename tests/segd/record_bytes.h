#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "segd/block_source.h"

namespace halvern::testing_support {

/// Bytes written as hexadecimal digits; blanks between them are free.
inline std::string hex(std::string_view digits) {
    std::string bytes;
    int high = -1;
    for (const char c : digits) {
        if (c == ' ' || c == '\n') continue;
        const int digit = c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10;
        if (high >= 0) bytes += static_cast<char>(high * 16 + digit);
        high = high >= 0 ? -1 : digit;
    }
    return bytes;
}
inline std::string zeros(std::size_t count) { return std::string(count, '\0'); }
/// `digits` decimal digits, two a byte.
inline std::string bcd(int value, int digits) {
    std::string text = std::to_string(value);
    text.insert(0, static_cast<std::size_t>(digits) - text.size(), '0');
    return hex(text);
}
inline std::string big_endian(std::uint32_t value, int bytes) {
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        text += static_cast<char>(value >> shift & 0xFF);
    }
    return text;
}

/// A record of revision 1 with one scan type at 2 ms, 8 ms long, put together field by field.
struct RecordParts {
    int file = 12;
    int format = 8058;
    int trailers = 0;
    std::string extra_header = {};  ///< extended header, whole blocks
    struct Set {
        int number;
        int channels;
        int end_ms;                    ///< from 0
        std::string mp = hex("0000");  ///< descale 1
        int type = 1;
        int sub_scans = 0;
    };
    std::vector<Set> sets = {{.number = 1, .channels = 2, .end_ms = 8}};

    std::string header() const {
        return bcd(file, 4) + bcd(format, 4) + zeros(6) +  // file number, format, constants
               hex("24 20 31 10 20 30") +                  // year 24, 2 more blocks, day 31, time
               hex("13 0000 000000 20 0000 8F FF 01") +    // maker, 2 ms, length in block 2, 1 scan
               bcd(static_cast<int>(sets.size()), 2) + hex("00") +  // channel sets, skew
               bcd(static_cast<int>(extra_header.size() / 32), 2) +
               hex("00") +  // extended, external
               zeros(10) + hex("01 00") + big_endian(static_cast<std::uint32_t>(trailers), 2) +
               big_endian(8, 3) + hex("00 02") + zeros(13) +  // record length 8 ms, block 2
               hex("00000C 00000A 8000 000014 4000 05") + zeros(4) + hex("03 01") + zeros(12) +
               descriptors() + extra_header;  // line 10.5, point 20.25, index 5
    }
    std::string descriptors() const {
        std::string bytes;
        for (const Set& set : sets) {
            bytes += hex("01") + bcd(set.number, 2) + big_endian(0, 2) +
                     big_endian(static_cast<std::uint32_t>(set.end_ms / 2), 2) + set.mp +
                     bcd(set.channels, 4) + std::string(1, static_cast<char>(set.type << 4)) +
                     std::string(1, static_cast<char>(set.sub_scans << 4 | 3)) + zeros(20);
        }
        return bytes;
    }
    /// A trace with `extensions` extensions; the first one claims `samples` (0: says nothing).
    std::string trace(int set, int number, const std::string& data, int extensions = 0,
                      int samples = 0) const {
        std::string bytes = bcd(file, 4) + hex("01") + bcd(set, 2) + bcd(number, 4) + zeros(3) +
                            std::string(1, static_cast<char>(extensions)) + zeros(10);
        if (extensions > 0) {
            bytes += hex("000007 FFFFFE 03") + big_endian(static_cast<std::uint32_t>(samples), 3) +
                     zeros(22);  // receiver line 7, point -2, index 3
            bytes += zeros(static_cast<std::size_t>(extensions - 1) * 32);
        }
        return bytes + data;
    }
};

/// Blocks from a list: "" is a filemark, kLostBlock a block that cannot be read; then no data.
inline const std::string kLostBlock = "lost";
class ListSource final : public segd::BlockSource {
public:
    explicit ListSource(std::vector<std::string> blocks, bool marks = true)
        : blocks_(std::move(blocks)), marks_(marks) {}
    Status next(std::span<const std::byte>& block) override {
        if (next_ >= blocks_.size()) return Status::kNoData;
        const std::string& data = blocks_[next_++];
        if (data.empty()) return Status::kNoData;
        if (data == kLostBlock) return Status::kReadError;
        block = std::as_bytes(std::span(data));
        return Status::kBlock;
    }
    int skip_file() override {
        while (next_ < blocks_.size() && !blocks_[next_].empty()) ++next_;
        return next_++ < blocks_.size() ? 0 : -1;
    }
    bool marks_blocks() const override { return marks_; }
    std::size_t left() const { return blocks_.size() - next_; }

private:
    std::vector<std::string> blocks_;
    std::size_t next_ = 0;
    const bool marks_;
};

}  // namespace halvern::testing_support
