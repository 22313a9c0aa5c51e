#pragma once

#include <cstddef>
#include <optional>

#include "segd/fields.h"

namespace halvern::segd {

/// Channel set descriptor: 32 bytes for each channel set of a scan type. Offsets count from 0.
struct ChannelSet {
    static constexpr std::size_t kSize = kBlockBytes;
    static constexpr std::size_t kST = 0;  ///< scan type number, 2 BCD digits
    static constexpr std::size_t kCN = 1;  ///< channel set number, 2 BCD digits; FF: see EN
    static constexpr std::size_t kTF = 2;  ///< start time, 2 ms
    static constexpr std::size_t kTE = 4;  ///< end time, 2 ms
    static constexpr std::size_t kMP = 6;  ///< descale exponent: low part, then sign and high part
    static constexpr std::size_t kCS = 8;  ///< channels, 4 BCD digits
    static constexpr std::size_t kC = 10;  ///< high half: channel type
    static constexpr std::size_t kSCJ = 11;  ///< high half: sub-scan exponent, 1 digit
    static constexpr std::size_t kAF = 12;   ///< alias filter: frequency in Hz, 4 BCD digits
    static constexpr std::size_t kAS = 14;   ///< and slope in dB per octave, 3 BCD digits
    static constexpr std::size_t kLC = 16;   ///< low-cut filter likewise
    static constexpr std::size_t kLS = 18;
    static constexpr std::size_t kNT = 20;   ///< three notch frequencies, 4 BCD digits, 0.1 Hz
    static constexpr std::size_t kEN = 26;   ///< extended channel set number, 16 bits
    static constexpr std::size_t kTHE = 28;  ///< low half: trace header extensions

    int scan_type;
    int number;
    int start_ms;
    int end_ms;
    /// What a decoded sample is multiplied by to give millivolts: 2 to the power MP.
    double descale;
    int channels;               ///< 0: the descriptor is not in use
    int type;                   ///< 1 seismic, 2 time break, …
    int sub_scans;              ///< 2 to this power samples in a base scan interval
    int alias_hz, alias_slope;  ///< filters: 0 when not in use or not decimal
    int low_cut_hz, low_cut_slope;
    double notch_hz[3];
    int extensions;  ///< trace header extensions that are announced

    static constexpr int kSeismic = 1;

    /// The descriptor in `bytes`, or nothing when its numbers, channels or sub-scans are not
    /// decimal. `revision_0`: no extended set number, and MP has its high part alone.
    static std::optional<ChannelSet> parse(Bytes<kSize> bytes, bool revision_0);
};

/// 2 to the power MP, from the two bytes in the order they are recorded in: MP has a sign (top bit
/// of the second byte), the rest of the second byte and the first one, in 1/1024.
double descale_multiplier(std::byte low, std::byte high);

/// TRACEID of a channel type: 1 seismic, 4 time break, 5 uphole, 8 water break, 7 timing, else 3.
int trace_id_of(int channel_type);

}  // namespace halvern::segd
