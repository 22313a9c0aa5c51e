#include "foundation/key_readers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>
#include <vector>

namespace halvern {
namespace {

constexpr int kMin = std::numeric_limits<int>::min();
constexpr int kMax = std::numeric_limits<int>::max();

TEST(KeyReaders, TakeTheKeyFromTheStartOfTheLineOnly) {
    for (const char* line : {"", "N", " N=5", "n=5", "XN=5", "N =5"}) {
        std::string text = "kept";
        int number = 42;
        EXPECT_EQ(ReadKey(line, "N=", text) + ReadKey(line, "N=", number), 0) << line;
        EXPECT_EQ(text, "kept");
        EXPECT_EQ(number, 42);
    }
}

TEST(KeyReaders, TextIsTheRestLessOneLineEnd) {
    const std::pair<std::string, std::string> kLines[] = {
        {"FILE=", ""},   {"FILE=a b ", "a b "}, {"FILE=a\r", "a"},
        {"FILE=\n", ""}, {"FILE=a\n\n", "a\n"}, {"FILE=FILE=x", "FILE=x"}};
    for (const auto& [line, expected] : kLines) {
        std::string value = "before";
        EXPECT_EQ(ReadKey(line.c_str(), "FILE=", value), 1);
        EXPECT_EQ(value, expected);
    }
}

// The integer stops at the first character that is none; the real goes on.
TEST(KeyReaders, NumbersReadAsFarAsTheyGoInAnyLocale) {
    struct Number {
        std::vector<const char*> lines;
        int integer;
        float real;
    };
    const Number kNumbers[] = {{{"N=", "N=abc", "N=0x10", "N=+-5", "N=inf", "N=nan"}, 0, 0},
                               {{"N= \t-17\r\n"}, -17, -17},
                               {{"N=12abc"}, 12, 12},
                               {{"N=-.25"}, 0, -.25f},
                               {{"N=1e3"}, 1, 1000},
                               {{"N=6.25E-2x"}, 6, .0625f},
                               {{"N=1,5"}, 1, 1},
                               {{"N=1e99"}, 1, 0},
                               {{"N=-1e-99"}, -1, 0},
                               {{"N=2147483647", "N=2147483648"}, kMax, 2147483648.f},
                               {{"N=-2147483649"}, kMin, -2147483648.f}};
    for (const char* locale : {"C", "de_DE.UTF-8"}) {  // a comma for the point, where installed
        std::setlocale(LC_ALL, locale);
        for (const auto& [lines, expected, expected_real] : kNumbers) {
            for (const char* line : lines) {
                int integer = 42;
                float real = 42;
                EXPECT_EQ(ReadKey(line, "N=", integer) + ReadKey(line, "N=", real), 2);
                EXPECT_EQ(integer, expected) << line;
                EXPECT_EQ(real, expected_real) << line;
            }
        }
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace halvern
