#include "foundation/time_stamp.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace halvern {
namespace {

// Seconds since 1970 from date(1): date -u -d '2026-11-14 15:32:49' +%s.
TEST(TimeStamp, IsTheDateWithoutTheWeekday) {
    setenv("TZ", "UTC", 1);
    tzset();
    EXPECT_EQ(time_stamp(1794670369), "Nov 14 15:32:49 2026");
    EXPECT_EQ(time_stamp_minutes(1794670369), "Nov 14 15:32 2026");
    EXPECT_EQ(time_stamp(1707004809), "Feb  4 00:00:09 2024");
    EXPECT_EQ(time_stamp_minutes(1707004809), "Feb  4 00:00 2024");
    EXPECT_FALSE(time_stamp_minutes(std::numeric_limits<std::time_t>::max()).empty());
}

}  // namespace
}  // namespace halvern
