#include "plots/time_axis.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "trace/big_endian.h"

namespace halvern {

namespace {

using HeaderImage = std::span<const std::byte, kTraceHeaderBytes>;
constexpr std::size_t kRevision = 3500;  // major number, in the line header
constexpr int kDelay = 108, kDevice = 212;
constexpr std::size_t kTimeScalar = 214;

/// The scalar of a revision 1 header, 1 where there is none. The standard knows 1, 10, ... 10000
/// and their negatives. The default header description has AZIMUTH, a float, at the device number
/// and the scalar: an azimuth of a whole degree has no more bits than its upper half holds, and any
/// that is set has more in it than a device number.
double time_scale(HeaderImage header) {
    constexpr int kMostDevices = 0x7F;
    if (get_u16(header.subspan<kDevice, 2>()) > kMostDevices) return 1;
    const int scalar = get_i16(header.subspan<kTimeScalar, 2>());
    for (int legal = 1; legal <= 10000; legal *= 10) {
        if (std::abs(scalar) == legal) return scalar_factor(scalar);
    }
    return 1;
}

}  // namespace

TimeAxis::TimeAxis(const LineHeader& line, const TraceHeaderDefinition& definition)
    : interval_ms_(line.sample_interval().ms()),
      delay_(definition.find("DELAY")),
      has_scalar_(line.bytes()[kRevision] != std::byte{0} &&
                  definition.location(delay_) == kDelay) {}

double TimeAxis::start_ms(const TraceHeaderDefinition& definition) const {
    const double delay = definition.get_double(delay_);
    if (!has_scalar_ || delay == 0) return delay;
    return delay * time_scale(HeaderImage(definition.image(), kTraceHeaderBytes));
}

TimeAxis::Samples TimeAxis::in(const TimeWindow& window, double start_ms,
                               std::size_t samples) const {
    if (!(interval_ms_ > 0)) return {0, samples};
    const auto last = static_cast<double>(samples) - 1;
    const double from = std::max(std::ceil((window.from_ms - start_ms) / interval_ms_ - 1e-6), 0.0);
    const double to = std::min(std::floor((window.to_ms - start_ms) / interval_ms_ + 1e-6), last);
    if (!(from <= to)) return {};
    return {static_cast<std::size_t>(from), static_cast<std::size_t>(to - from) + 1};
}

}  // namespace halvern
