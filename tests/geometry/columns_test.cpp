#include "geometry/columns.h"

#include <gtest/gtest.h>

#include <limits>

namespace halvern {
namespace {

TEST(ColumnRecord, KeepsEveryFieldWithinItsColumns) {
    struct Case {
        double value;
        int decimals;
        const char* field;  // of 5 columns
        int misfits;
    };
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr Case kCases[] = {
        {12.34, 1, " 12.3", 0},   {-7, 0, "   -7", 0},
        {-0.04, 1, "  0.0", 0},   {999.96, 1, "     ", 1},
        {99999.4, 0, "99999", 0}, {-10000, 0, "     ", 1},
        {1e300, 1, "     ", 1},   {kNaN, 1, "     ", 0},
        {-kNaN, 0, "     ", 0},   {std::numeric_limits<double>::infinity(), 0, "     ", 1},
        {123, 1, "123.0", 0},
    };
    for (const auto& [value, decimals, field, misfits] : kCases) {
        SCOPED_TRACE(value);
        ColumnRecord record(9);
        record.text({1, 2}, "ABC");
        record.text({8, 9}, "Z");
        record.number({3, 7}, value, decimals);
        EXPECT_EQ(record.line(), std::string("AB") + field + "Z ");
        EXPECT_EQ(record.misfits(), misfits);
    }
    ColumnRecord record(6);
    record.digits({1, 3}, 7);
    record.digits({4, 5}, 123);
    EXPECT_EQ(record.line(), "007   ");
}

}  // namespace
}  // namespace halvern
