#include "foundation/key_readers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <limits>

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
        {"FILE=", ""},           {"FILE=a b ", "a b "},
        {"FILE=a\n", "a"},       {"FILE=a\r", "a"},
        {"FILE=a\n\n", "a\n"},   {"FILE=\n", ""},
        {"FILE==", "="},         {"FILE=FILE=x", "FILE=x"},
        {"FILE=100%s", "100%s"}, {"FILE=" + std::string(194, 'x'), std::string(194, 'x')}};
    for (const auto& [line, expected] : kLines) {
        std::string value = "before";
        EXPECT_EQ(ReadKey(line.c_str(), "FILE=", value), 1);
        EXPECT_EQ(value, expected);
    }
}

// The integer stops at the first character that is none; the real goes on.
TEST(KeyReaders, NumbersReadAsFarAsTheyGoInAnyLocale) {
    struct Number {
        const char* line;
        int integer;
        float real;
    };
    const Number kNumbers[] = {{"N=5", 5, 5},
                               {"N= \t-17\r\n", -17, -17},
                               {"N=+8", 8, 8},
                               {"N=12abc", 12, 12},
                               {"N=3.9", 3, 3.9f},
                               {"N=-.25", 0, -.25f},
                               {"N=1e3", 1, 1000},
                               {"N=6.25E-2x", 6, .0625f},
                               {"N=007", 7, 7},
                               {"N=0x10", 0, 0},
                               {"N=1,5", 1, 1},
                               {"N=", 0, 0},
                               {"N=abc", 0, 0},
                               {"N=-", 0, 0},
                               {"N=+-5", 0, 0},
                               {"N=--5", 0, 0},
                               {"N=inf", 0, 0},
                               {"N=nan", 0, 0},
                               {"N=1e99", 1, 0},
                               {"N=-1e-99", -1, 0},
                               {"N=2147483647", kMax, 2147483648.f},
                               {"N=2147483648", kMax, 2147483648.f},
                               {"N=-2147483649", kMin, -2147483648.f}};
    for (const char* locale : {"C", "de_DE.UTF-8"}) {  // a comma for the point, where installed
        std::setlocale(LC_ALL, locale);
        for (const Number& number : kNumbers) {
            SCOPED_TRACE(number.line);
            int integer = 42;
            float real = 42;
            EXPECT_EQ(ReadKey(number.line, "N=", integer), 1);
            EXPECT_EQ(ReadKey(number.line, "N=", real), 1);
            EXPECT_EQ(integer, number.integer);
            EXPECT_EQ(real, number.real);
        }
    }
    std::setlocale(LC_ALL, "C");
}

}  // namespace
}  // namespace halvern
