#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace halvern::testing_support {

/// A SEG-Y file built byte by byte, with none of the system's own code: format code 5 (IEEE), FFID
/// at byte 8, CHAN at 12 and OFFSET at 36 of each header, counted from 0.
struct SmallTrace {
    int ffid = 1;
    int channel = 1;
    int offset = 0;
    std::vector<float> samples;
};
std::string small_segy(int interval_us, int samples, const std::vector<SmallTrace>& traces);

}  // namespace halvern::testing_support
