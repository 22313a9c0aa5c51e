#pragma once

#include <ctime>
#include <string>

namespace halvern {

/// Local time as in "Nov 14 15:32:49 2026": English months, the day padded with a blank.
std::string time_stamp(std::time_t time);
std::string time_stamp();  ///< now

/// Without the seconds: "Nov 14 15:32 2026".
std::string time_stamp_minutes(std::time_t time);
std::string time_stamp_minutes();  ///< now

}  // namespace halvern
