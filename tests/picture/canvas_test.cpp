#include "picture/canvas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "picture/font.h"
#include "picture/palette.h"

namespace halvern::picture {
namespace {

/// Ink on a white canvas, in whole black pixels.
double ink(const Canvas& canvas) {
    double sum = 0;
    for (const Colour& pixel : canvas.pixels()) sum += (255 - pixel.red) / 255.0;
    return sum;
}

TEST(Canvas, APixelCoveredInPartTakesTheColourInPart) {
    Canvas canvas(4, 2);
    canvas.blend(1, 0, kBlack, 0.5);  // 255 / 2
    EXPECT_EQ(canvas.at(1, 0), (Colour{128, 128, 128}));
    canvas.blend(2, 1, {255, 0, 0}, 0.25);  // 255 * 3 / 4
    EXPECT_EQ(canvas.at(2, 1), (Colour{255, 191, 191}));
    canvas.blend(9, 9, kBlack, 1);  // outside: nothing
    EXPECT_EQ(canvas.at(0, 0), kWhite);
}

TEST(Canvas, NothingIsDrawnOutsideTheClip) {
    Canvas canvas(10, 10);
    canvas.set_clip({2, 2, 3, 3});
    canvas.fill({-5, -5, 50, 50}, kBlack);
    EXPECT_EQ(ink(canvas), 9);
    canvas.clear_clip();
    canvas.line({-100, 0.5}, {1e7, 0.5}, 1, kBlack);  // far beyond both edges
    EXPECT_EQ(canvas.at(9, 0), kBlack);
}

// Areas by geometry; the smooth edge of round ends and slanting sides leaves a few percent.
TEST(Canvas, ShapesCoverTheirArea) {
    Canvas line(60, 60), slant(60, 60), triangle(60, 60), disc(60, 60);
    line.line({10.5, 20.5}, {40.5, 20.5}, 2, kBlack);
    EXPECT_NEAR(ink(line), 30 * 2 + std::acos(-1.0), 2);
    slant.line({10.5, 10.5}, {40.5, 50.5}, 3, kBlack);  // 3, 4, 5: 50 long
    EXPECT_NEAR(ink(slant), 50 * 3 + 2.25 * std::acos(-1.0), 5);
    const Point corners[] = {{10, 10}, {50, 10}, {10, 40}};
    triangle.polygon(corners, kBlack);
    EXPECT_NEAR(ink(triangle), 600, 6);
    disc.disc({30, 30}, 10, kBlack);
    EXPECT_NEAR(ink(disc), 100 * std::acos(-1.0), 6);
}

TEST(Canvas, LinesThatCrossAreOneShape) {
    Canvas canvas(21, 21);
    const Polyline cross[] = {{{0.5, 10.5}, {20.5, 10.5}}, {{10.5, 0.5}, {10.5, 20.5}}};
    canvas.stroke(cross, 0.5, kBlack);
    // A thin line is pale, and no darker where two of them meet.
    EXPECT_EQ(canvas.at(10, 10), canvas.at(5, 10));
    EXPECT_EQ(canvas.at(5, 10), (Colour{128, 128, 128}));
}

TEST(Font, EveryCharacterHasAShapeOfItsOwnWithinItsWidth) {
    std::vector<std::vector<Colour>> shapes;
    for (char c = '!'; c <= '~'; ++c) {
        Canvas canvas(60, 80);
        const std::string text(1, c);
        draw_text(canvas, {10, 50}, text, {.size = 28});
        EXPECT_GT(ink(canvas), 8) << c;
        const double right = 10 + text_width(text, 28);
        for (int y = 0; y < 80; ++y) {
            for (int x = 0; x < 60; ++x) {
                const bool near_box = x >= 7 && x <= right + 3 && y >= 50 - 36 && y <= 50 + 14;
                EXPECT_TRUE(near_box || canvas.at(x, y) == kWhite) << c << ' ' << x << ' ' << y;
            }
        }
        const std::vector<Colour> shape(canvas.pixels().begin(), canvas.pixels().end());
        for (const auto& other : shapes) EXPECT_NE(shape, other) << c;
        shapes.push_back(shape);
    }
}

TEST(Font, AnchorsAndTurnsText) {
    EXPECT_GT(text_width("MM", 10), 2 * text_width("M", 10));
    EXPECT_EQ(text_width("", 10), 0);
    // One character of two bytes is one question mark.
    EXPECT_EQ(text_width("\xC3\xA4", 10), text_width("a", 10));
    Canvas end(100, 40), upward(40, 100);
    draw_text(end, {90, 30}, "HHH", {.size = 14, .anchor = Anchor::kEnd});
    for (int y = 0; y < 40; ++y) EXPECT_EQ(end.at(93, y), kWhite);
    EXPECT_NE(ink(end), 0);
    draw_text(upward, {30, 90}, "HHH", {.size = 14, .upward = true});
    for (int x = 0; x < 40; ++x) EXPECT_EQ(upward.at(x, 94), kWhite);
    EXPECT_NEAR(ink(upward), ink(end), 2);
}

TEST(Palette, ScalesAreInOrderOfLightness) {
    // The luminance of sRGB's primaries, without its curve: enough to tell an order.
    const auto lightness = [](Colour c) {
        return 0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue;
    };
    double last = -1;
    for (int i = 0; i <= 128; ++i) {
        const double value = lightness(Palette::quantity().at(i / 128.0));
        EXPECT_GE(value, last) << i;
        last = value;
    }
    for (int i = 0; i < 64; ++i) {
        EXPECT_LE(lightness(Palette::red_white_blue().at(i / 128.0)),
                  lightness(Palette::red_white_blue().at((i + 1) / 128.0)) + 1e-9);
    }
    EXPECT_EQ(Palette::grey().at(1), kBlack);
    EXPECT_EQ(Palette::grey().at(-3), kWhite);
    EXPECT_EQ(Palette::grey().at(std::nan("")), kWhite);
}

}  // namespace
}  // namespace halvern::picture
