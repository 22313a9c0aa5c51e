#include "geometry/decimal_field.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace halvern {
namespace {

// They know no names and no hexadecimal.
TEST(DecimalField, NumbersStopWhereTheNumberStops) {
    constexpr double kMost = std::numeric_limits<double>::max();
    constexpr struct {
        const char* text;
        int whole;
        double real;
    } kFields[] = {{"    ", 0, 0},
                   {"  12  ", 12, 12},
                   {"+7", 7, 7},
                   {"1001.00", 1001, 1001},
                   {"12x", 12, 12},
                   {"x12", 0, 0},
                   {"- 5", 0, 0},
                   {"0x10", 0, 0},
                   {"2147483648", INT_MAX, 2147483648},
                   {"-2147483649", INT_MIN, -2147483649},
                   {"99999999999999999999999999", INT_MAX, 99999999999999999999999999.0},
                   {"", 0, 0},
                   {" .", 0, 0},
                   {".5", 0, .5},
                   {"-.25", 0, -.25},
                   {"+3.", 3, 3},
                   {"1.2.3", 1, 1.2},
                   {"1e3", 1, 1000},
                   {"1e", 1, 1},
                   {"2E-1x", 2, .2},
                   {"inf", 0, 0},
                   {"nan", 0, 0},
                   {"1e-999", 1, 0},
                   {"1e999", 1, kMost}};
    for (const auto& [text, whole, real] : kFields) {
        EXPECT_EQ(decimal_int(text), whole) << "'" << text << "'";
        EXPECT_EQ(decimal_real(text), real) << "'" << text << "'";
    }
}

// The C library is the reference for every plain number.
TEST(DecimalField, RealNumbersAreRoundedAsTheLibraryRoundsThem) {
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 3, ' ');
        if (random() % 2) text += '-';
        for (auto digits = random() % 13; digits-- > 0;)
            text += static_cast<char>('0' + random() % 10);
        text += '.';
        for (auto digits = random() % 8; digits-- > 0;)
            text += static_cast<char>('0' + random() % 10);
        ASSERT_EQ(decimal_real(text), std::strtod(text.c_str(), nullptr)) << text;
    }
}

TEST(DecimalField, AFieldBeginsWithItsOnlyNumber) {
    for (const char* text : {"1", "  -1.5 ", ".5", "17 \t", " 101A", "1.2.3", "12 m", "5-6"}) {
        EXPECT_EQ(classify_field(text), FieldText::kNumber) << text;
    }
    for (const char* text : {"1 2", "1.00  1E", "5 6312345.", "12 m -3", "A12", "-", "\r1"}) {
        EXPECT_EQ(classify_field(text), FieldText::kOther) << text;
    }
    for (const char* text : {"", " ", " \t "}) {
        EXPECT_EQ(classify_field(text), FieldText::kBlank) << text;
    }
}

}  // namespace
}  // namespace halvern
