#include "trace/ranges.h"

#include <gtest/gtest.h>

#include <cmath>

namespace halvern {
namespace {

TEST(Ranges, HoldTheValuesTheyName) {
    struct Case {
        const char* text;
        std::vector<double> inside, outside;
    };
    const Case cases[] = {
        {"", {-1e9, 0, 0.5}, {}},
        {"  ", {7}, {}},
        {"-5", {-5}, {5, -4.999, -5.001}},
        {"+5 - +7", {5, 6.5, 7}, {4, 8}},
        {"1-3,7", {1, 2, 3, 7, 1.5}, {0.99, 4, 6.99}},
        {"200-100", {}, {100, 150, 200}},  // without an increment only forwards
        {"100-200(2)", {100, 102, 200}, {101, 99, 202}},
        {"200-100(2)", {100, 102, 200}, {101, 99, 202}},
        {"200-100(-3)", {200, 197, 101}, {100, 199, 98}},
        {"1-9(3), 20", {1, 4, 7, 20}, {2, 9, 19}},
        {"1-3(0)", {1, 1.5, 3}, {4}},  // no increment at all
        {"-10--5", {-10, -7.25, -5}, {-11, -4, 5, std::nan("")}},
        {"1.5-2e1", {1.5, 20}, {1.4, 20.1}},
        {"1 0 - 2 0", {10, 20}, {9, 21}},
        {"1(2)-5", {1, 3, 5}, {2, 7}},
    };
    for (const auto& [text, inside, outside] : cases) {
        const std::optional<RangeList> ranges = parse_ranges(text);
        ASSERT_TRUE(ranges) << text;
        for (const double value : inside) EXPECT_TRUE(in_ranges(value, *ranges)) << text << value;
        for (const double value : outside) EXPECT_FALSE(in_ranges(value, *ranges)) << text << value;
    }
}

TEST(Ranges, RefuseWhatIsNoNumber) {
    const char* const texts[] = {
        "a",
        "1-",
        "-",
        "1,",
        ",1",
        "1,,2",
        "1-2-3",
        "1e-3",
        "1-2(",
        "1-2)",
        "1-2()",
        "1-2(x)",
        "1-2(1.5)",
        "1-2( 2)",
        "1-2(2)(3)",
        "1-2(2,3)",
        "0x10",
        "inf",
        "nan",
        "1e999",
        "1.2.3",
        "+-5",
        "1-2(99999999999)",
        "(2)",
        "\t5",
    };
    for (const char* text : texts) EXPECT_FALSE(parse_ranges(text)) << text;
}

}  // namespace
}  // namespace halvern
