#pragma once

#include <cstddef>
#include <optional>

#include "segd/fields.h"

namespace halvern::segd {

/// Demultiplexed trace header: 20 bytes before every trace. Offsets count from 0.
struct TraceHeader {
    static constexpr std::size_t kSize = 20;
    static constexpr std::size_t kF = 0;     ///< file number, 4 BCD digits; FFFF: see EFN
    static constexpr std::size_t kST = 2;    ///< scan type number, 2 BCD digits
    static constexpr std::size_t kCN = 3;    ///< channel set number, 2 BCD digits; FF: see ECN
    static constexpr std::size_t kTN = 4;    ///< trace number within the set, 4 BCD digits
    static constexpr std::size_t kTHE = 9;   ///< trace header extensions that follow, binary
    static constexpr std::size_t kECN = 15;  ///< extended channel set number, 16 bits
    static constexpr std::size_t kEFN = 17;  ///< extended file number, 24 bits

    int file_number;
    bool file_extended;  ///< the number is EFN's, which some recorders leave 0 or use otherwise
    int scan_type;       ///< -1: not decimal
    int channel_set;     ///< -1: not decimal
    int trace_number;
    int extensions;  ///< 0 in revision 0, where the byte means nothing

    /// The header in `bytes`, or nothing when a digit of file or trace number is not decimal.
    static constexpr std::optional<TraceHeader> parse(Bytes<kSize> bytes, bool revision_0) {
        const bool file_extended = !revision_0 && get_u16(bytes.subspan<kF, 2>()) == 0xFFFF;
        const bool set_extended = !revision_0 && bytes[kCN] == std::byte{0xFF};
        const int file = file_extended ? static_cast<int>(get_u24(bytes.subspan<kEFN, 3>()))
                                       : get_bcd(bytes.subspan<kF, 2>());
        const int set = set_extended ? static_cast<int>(get_u16(bytes.subspan<kECN, 2>()))
                                     : get_bcd(bytes.subspan<kCN, 1>());
        const int trace = get_bcd(bytes.subspan<kTN, 2>());
        if (file < 0 || trace < 0) return {};
        return TraceHeader{.file_number = file,
                           .file_extended = file_extended,
                           .scan_type = get_bcd(bytes.subspan<kST, 1>()),
                           .channel_set = set,
                           .trace_number = trace,
                           .extensions = revision_0 ? 0 : std::to_integer<int>(bytes[kTHE])};
    }
};

/// Trace header extension #1, from revision 1 on: where the receiver is, and how many samples
/// follow.
struct TraceHeaderExtension1 {
    static constexpr std::size_t kSize = kBlockBytes;
    static constexpr std::size_t kRLN = 0;  ///< receiver line number, 24 bits signed; FFFFFF: ERLN
    static constexpr std::size_t kRPN = 3;  ///< receiver point number; FFFFFF: see ERPN
    static constexpr std::size_t kRPI = 6;  ///< receiver point index, 8 bits signed
    static constexpr std::size_t kNBS = 7;  ///< samples in this trace, 24 bits; 0: not given
    static constexpr std::size_t kERLN = 10;  ///< extended receiver line number: 24 bits, 16 bits
    static constexpr std::size_t kERPN = 15;  ///< extended receiver point number likewise
    static constexpr std::size_t kSEN = 20;   ///< sensor type

    double receiver_line;
    double receiver_point;
    int receiver_index;
    int samples;
    int sensor;

    static constexpr TraceHeaderExtension1 parse(Bytes<kSize> b) {
        const bool line_extended = get_u24(b.subspan<kRLN, 3>()) == 0xFFFFFF;
        const bool point_extended = get_u24(b.subspan<kRPN, 3>()) == 0xFFFFFF;
        return {.receiver_line =
                    line_extended ? get_position(b.subspan<kERLN, 3>(), b.subspan<kERLN + 3, 2>())
                                  : get_i24(b.subspan<kRLN, 3>()),
                .receiver_point =
                    point_extended ? get_position(b.subspan<kERPN, 3>(), b.subspan<kERPN + 3, 2>())
                                   : get_i24(b.subspan<kRPN, 3>()),
                .receiver_index = static_cast<signed char>(std::to_integer<unsigned>(b[kRPI])),
                .samples = static_cast<int>(get_u24(b.subspan<kNBS, 3>())),
                .sensor = std::to_integer<int>(b[kSEN])};
    }
};

}  // namespace halvern::segd
