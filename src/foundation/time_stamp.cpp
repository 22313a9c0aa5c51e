#include "foundation/time_stamp.h"

namespace halvern {

std::string time_stamp(std::time_t time) {
    const char* const text = std::ctime(&time);  // "Sat Nov 14 15:32:49 2026\n"
    if (!text) return "(no date)";               // beyond the calendar that the library knows
    const std::string whole(text);
    return whole.substr(4, whole.size() - 5);
}

std::string time_stamp() { return time_stamp(std::time(nullptr)); }

std::string time_stamp_minutes(std::time_t time) {
    std::string whole = time_stamp(time);
    if (whole.find(':') == std::string::npos) return whole;
    return whole.substr(0, whole.rfind(':')) + whole.substr(whole.rfind(' '));
}

std::string time_stamp_minutes() { return time_stamp_minutes(std::time(nullptr)); }

}  // namespace halvern
