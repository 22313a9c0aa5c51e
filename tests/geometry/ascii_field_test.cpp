#include "geometry/ascii_field.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

TEST(AsciiField, ReadsItsColumnsOfALine) {
    const std::string wide = std::string(50, ' ') + "12";
    const struct {
        int first, last;
        std::string line;
        bool ended, floating;
        double value;
    } kCases[] = {
        {3, 8, "ab  12.7cd", true, true, 12.7},
        {3, 8, "ab  12.7cd", true, false, 13},
        {1, 6, "-12.5 ", true, false, -13},
        {1, 6, "  12.4", true, false, 12},
        {1, 6, " 12abc", true, true, 12},
        {1, 6, "  abc ", true, true, 0},
        {1, 9, "   -1.5e2", true, true, -150},
        // Four characters from the first column on, the line end among them.
        {5, 9, "1234567", true, true, 567},
        {5, 9, "1234567", false, true, 0},
        {5, 9, "123456", true, true, 0},
        {1, 60, wide, true, true, 1},  // the 52nd character is not looked at
        {6, 5, "1234567890", true, true, 0},
        {0, 5, "1234567890", true, true, 0},
        {2147483647, 2147483647, "1234567890", true, true, 0},
    };
    for (const auto& c : kCases) {
        const AsciiField field{
            .first_column = c.first, .last_column = c.last, .floating = c.floating};
        EXPECT_EQ(field.value(c.line, c.ended), c.value) << c.line << ", " << field.range_text();
    }
}

TEST(AsciiField, StandsInTheFlowFile) {
    const struct {
        const char* text;
        const char* name;
        int first, last;
        bool trace;
        const char* key;
        const char* written;
    } kCases[] = {
        {"FFID 1 8", "FFID", 1, 8, true, "", "FFID 1 8"},
        {"SRCX  10  20 0 S 1 ", "SRCX", 10, 20, false, "S 1 ", "SRCX 10 20 0 S 1 "},
        {"SRCX 10 20 7 K", "SRCX", 10, 20, true, "K", "SRCX 10 20 1 K"},
        {"SRCX 10 20 0", "SRCX", 10, 20, false, "", "SRCX 10 20"},
        {"SRCX 10 20 ", "SRCX", 10, 20, true, "", "SRCX 10 20"},
        {"SRCX", "SRCX", 0, 0, true, "", "SRCX 0 0"},
        {"", "", 0, 0, true, "", " 0 0"},
    };
    for (const auto& c : kCases) {
        const AsciiField data = AsciiField::parse_data(c.text);
        EXPECT_EQ(data.name, c.name) << c.text;
        EXPECT_EQ(data.first_column, c.first) << c.text;
        EXPECT_EQ(data.last_column, c.last) << c.text;
        EXPECT_EQ(data.trace, c.trace) << c.text;
        EXPECT_EQ(data.key, c.key) << c.text;
        EXPECT_EQ(data.data_text(), c.written);
        const AsciiField match = AsciiField::parse_match("4 " + std::string(c.text));
        EXPECT_EQ(match.compare, kGreater);
        EXPECT_EQ(match.match_text(), "4 " + std::string(c.written));
    }
    EXPECT_EQ(AsciiField::parse_match("").name, "");
    EXPECT_EQ(AsciiField::parse_match("x FFID 1 8").compare, 9) << "matches nothing";
}

}  // namespace
}  // namespace halvern
