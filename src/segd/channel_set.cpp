#include "segd/channel_set.h"

#include <algorithm>
#include <cmath>

namespace halvern::segd {

double descale_multiplier(std::byte low, std::byte high) {
    const int magnitude =
        std::to_integer<int>(high & std::byte{0x7F}) << 8 | std::to_integer<int>(low);
    const bool negative = (high & std::byte{0x80}) != std::byte{};
    return std::exp2((negative ? -magnitude : magnitude) / 1024.0);
}

std::optional<ChannelSet> ChannelSet::parse(Bytes<kSize> bytes, bool revision_0) {
    const auto count = [](int decimal) { return std::max(decimal, 0); };
    const bool extended = !revision_0 && bytes[kCN] == std::byte{0xFF};
    const int number = extended ? static_cast<int>(get_u16(bytes.subspan<kEN, 2>()))
                                : get_bcd(bytes.subspan<kCN, 1>());
    const int scan_type = get_bcd(bytes.subspan<kST, 1>());
    const int channels = get_bcd(bytes.subspan<kCS, 2>());
    const int sub_scans = high_nibble(bytes[kSCJ]);
    if (number < 0 || scan_type < 0 || channels < 0 || sub_scans > 9) return {};

    const auto notch = [&](Bytes<2> digits) { return count(get_bcd(digits)) / 10.0; };
    return ChannelSet{
        .scan_type = scan_type,
        .number = number,
        .start_ms = static_cast<int>(get_u16(bytes.subspan<kTF, 2>())) * 2,
        .end_ms = static_cast<int>(get_u16(bytes.subspan<kTE, 2>())) * 2,
        .descale = descale_multiplier(revision_0 ? std::byte{} : bytes[kMP], bytes[kMP + 1]),
        .channels = channels,
        .type = high_nibble(bytes[kC]),
        .sub_scans = sub_scans,
        .alias_hz = count(get_bcd(bytes.subspan<kAF, 2>())),
        .alias_slope = count(get_bcd3(bytes.subspan<kAS, 2>())),
        .low_cut_hz = count(get_bcd(bytes.subspan<kLC, 2>())),
        .low_cut_slope = count(get_bcd3(bytes.subspan<kLS, 2>())),
        .notch_hz = {notch(bytes.subspan<kNT, 2>()), notch(bytes.subspan<kNT + 2, 2>()),
                     notch(bytes.subspan<kNT + 4, 2>())},
        .extensions = low_nibble(bytes[kTHE]),
    };
}

int trace_id_of(int channel_type) {
    switch (channel_type) {
        case ChannelSet::kSeismic:
            return 1;
        case 2:
            return 4;
        case 3:
            return 5;
        case 4:
            return 8;
        case 5:
            return 7;
        default:
            return 3;
    }
}

}  // namespace halvern::segd
