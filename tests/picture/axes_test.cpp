#include "picture/axes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "picture/font.h"

namespace halvern::picture {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

TEST(Ticks, AreRoundNumbersWithinTheRange) {
    struct Case {
        double low, high;
        int most;
        std::vector<double> expected;
    };
    const Case kCases[] = {
        {0, 10, 6, {0, 2, 4, 6, 8, 10}},           {0, 2396, 6, {0, 500, 1000, 1500, 2000}},
        {-1.2, 1.2, 5, {-1, -0.5, 0, 0.5, 1}},     {10, 0, 3, {0, 5, 10}},
        {6074232, 6074795, 4, {6074400, 6074600}}, {5, 5, 4, {}}};
    for (const auto& [low, high, most, expected] : kCases) {
        EXPECT_THAT(ticks_between(low, high, most), Pointwise(testing::DoubleNear(1e-9), expected))
            << low << ' ' << high;
    }
    EXPECT_EQ(tick_step(1, 2, 10, true), 1);
    EXPECT_TRUE(ticks_between(0, std::numeric_limits<double>::infinity(), 5).empty());
    EXPECT_LE(ticks_between(1e15, 1e15 + 1, 5).size(), 5u);
}

TEST(Ticks, HaveTheDecimalsThatTheirStepNeeds) {
    EXPECT_EQ(tick_text(1500, 500), "1500");
    EXPECT_EQ(tick_text(0.25, 0.05), "0.25");
    EXPECT_EQ(tick_text(-1e-17, 0.5), "0.0") << "no minus before zero";
    EXPECT_EQ(tick_text(3e8, 1e8), "3e+08");
}

/// Rows of a picture of `text` that have ink, counted up from the baseline.
std::vector<int> inked_rows(const char* text) {
    Canvas canvas(60, 60);
    draw_text(canvas, {10, 40}, text, {.size = 14});
    std::vector<int> rows;
    for (int y = 59; y >= 0; --y) {
        for (int x = 0; x < 60; ++x) {
            if (canvas.at(x, y).red > 128) continue;
            rows.push_back(40 - y);
            break;
        }
    }
    return rows;
}

// A small letter is 10 high, a capital 14; letters hang down to -4.
TEST(Letters, OfLatinHaveTheirMarks) {
    const auto inked = [](const char* text, int row) {
        return std::ranges::count(inked_rows(text), row) > 0;
    };
    for (const char* text : {"\u00e9", "\u00f6", "\u00f1", "\u00ee", "\u00e5"}) {
        EXPECT_TRUE(inked(text, 13)) << text;
    }
    for (const char* text : {"\u00c9", "\u00d6", "\u00d1"}) EXPECT_TRUE(inked(text, 17)) << text;
    for (const char* text : {"\u00e7", "\u00c7"}) EXPECT_TRUE(inked(text, -2)) << text;
    EXPECT_FALSE(inked("e", 13));
    EXPECT_FALSE(inked("E", 17));
    EXPECT_FALSE(inked("c", -2));
    EXPECT_EQ(text_width("caf\u00e9", 14), text_width("cafe", 14));
    EXPECT_EQ(inked_rows("\u6c34"), inked_rows("\U0001F30D")) << "a box";
    EXPECT_FALSE(inked_rows("\xE9").empty()) << "no UTF-8";
}

TEST(Letters, AreCutBetweenCharacters) {
    const std::string text = "\u00e9\u00e9\u00e9\u00e9";
    EXPECT_EQ(fitted(text, 14, text_width(text, 14)), text);
    EXPECT_EQ(fitted(text, 14, text_width("ee...", 14)), "\u00e9\u00e9...");
    EXPECT_EQ(fitted(text, 14, 0), "");
}

}  // namespace
}  // namespace halvern::picture
