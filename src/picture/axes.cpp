#include "picture/axes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "picture/font.h"

namespace halvern::picture {

namespace {
constexpr int kTick = 5;          // length, pixels
constexpr double kBetweenX = 80;  // pixels that an x tick's label wants
constexpr double kBetweenY = 45;
constexpr double kMostTicks = 1e4;
constexpr double kOver = 16;  // by which an upright label may be longer than its axis
}  // namespace

double tick_step(double low, double high, int most, bool whole) {
    const double range = std::fabs(high - low);
    if (!(range > 0) || !std::isfinite(range)) return 0;
    for (auto exponent = static_cast<int>(std::floor(std::log10(range / std::max(most, 2))));;
         ++exponent) {
        const double power = std::pow(10, exponent);
        if (!(power > 0)) return 0;  // below the smallest number there is
        for (const double factor : {1.0, 2.0, 5.0}) {
            const double step = factor * power;
            if (whole && step < 1) continue;
            const double first = std::ceil(std::min(low, high) / step - 1e-9);
            const double last = std::floor(std::max(low, high) / step + 1e-9);
            if (last - first + 1 <= std::max(most, 2)) return step;
        }
    }
}

namespace {

std::vector<double> multiples(double low, double high, double step) {
    std::vector<double> ticks;
    if (step <= 0) return ticks;
    const double first = std::ceil(std::min(low, high) / step - 1e-9);
    const double last = std::floor(std::max(low, high) / step + 1e-9);
    // Counted, so that a step too small to add to a large number ends, too.
    const int count = last >= first ? static_cast<int>(std::min(last - first, kMostTicks)) + 1 : 0;
    for (int i = 0; i < count; ++i) ticks.push_back((first + i) * step);
    return ticks;
}

}  // namespace

std::vector<double> ticks_between(double low, double high, int most) {
    return multiples(low, high, tick_step(low, high, most));
}

std::string tick_text(double value, double step) {
    const double magnitude = std::max(std::fabs(value), step);
    char text[40];
    if (step > 0 && (magnitude >= 1e7 || step < 1e-4)) {
        std::snprintf(text, sizeof text, "%.3g", std::fabs(value) < step / 2 ? 0.0 : value);
        return text;
    }
    const int decimals =
        step > 0 ? std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9))) : 3;
    std::snprintf(text, sizeof text, "%.*f", decimals, std::fabs(value) < step / 2 ? 0.0 : value);
    return text;
}

double Axes::x_of(double value) const {
    return area_.x + (value - x_.low) / (x_.high - x_.low) * area_.width;
}

double Axes::y_of(double value) const {
    const double part = (value - y_.low) / (y_.high - y_.low);
    return area_.y + (y_.downward ? part : 1 - part) * area_.height;
}

double Axes::x_step() const {
    return tick_step(x_.low, x_.high, static_cast<int>(area_.width / kBetweenX) + 1, x_.whole);
}

double Axes::y_step() const {
    return tick_step(y_.low, y_.high, static_cast<int>(area_.height / kBetweenY) + 1, y_.whole);
}

void Axes::draw_x_grid() const {
    for (const double tick : multiples(x_.low, x_.high, x_step())) {
        canvas_.fill({static_cast<int>(std::floor(x_of(tick))), area_.y, 1, area_.height}, kGrid);
    }
}

void Axes::draw_y_grid() const {
    for (const double tick : multiples(y_.low, y_.high, y_step())) {
        canvas_.fill({area_.x, static_cast<int>(std::floor(y_of(tick))), area_.width, 1}, kGrid);
    }
}

void Axes::draw_frame() const {
    const Rect& a = area_;
    canvas_.fill({a.x - 1, a.y - 1, a.width + 2, 1}, kInk);
    canvas_.fill({a.x - 1, a.bottom(), a.width + 2, 1}, kInk);
    canvas_.fill({a.x - 1, a.y - 1, 1, a.height + 2}, kInk);
    canvas_.fill({a.right(), a.y - 1, 1, a.height + 2}, kInk);
}

void Axes::draw_y_axis() const {
    const double step = y_step();
    const std::vector<double> ticks = multiples(y_.low, y_.high, step);
    double widest = 0;
    for (const double tick : ticks) {
        const int y =
            std::clamp(static_cast<int>(std::floor(y_of(tick))), area_.y - 1, area_.bottom());
        canvas_.fill({area_.x - 1 - kTick, y, kTick, 1}, kInk);
        const std::string text = tick_text(tick, step);
        widest = std::max(widest, text_width(text, kTextSize));
        draw_text(canvas_, {area_.x - kTick - 5.0, y + kTextSize / 2}, text,
                  {.size = kTextSize, .colour = kInk, .anchor = Anchor::kEnd});
    }
    draw_text(canvas_, {area_.x - kTick - 14.0 - widest, area_.y + area_.height / 2.0},
              fitted(y_.label, kTextSize, area_.height + kOver),
              {.size = kTextSize, .colour = kInk, .anchor = Anchor::kMiddle, .upward = true});
}

void Axes::draw_x_axis() const {
    const double step = x_step();
    const std::vector<double> ticks = multiples(x_.low, x_.high, step);
    for (const double tick : ticks) {
        const int x =
            std::clamp(static_cast<int>(std::floor(x_of(tick))), area_.x - 1, area_.right());
        canvas_.fill({x, area_.bottom() + 1, 1, kTick}, kInk);
        draw_text(canvas_, {x + 0.5, area_.bottom() + kTick + kTextSize + 5.0},
                  tick_text(tick, step),
                  {.size = kTextSize, .colour = kInk, .anchor = Anchor::kMiddle});
    }
    draw_text(canvas_, {area_.x + area_.width / 2.0, area_.bottom() + kTick + 2 * kTextSize + 15.0},
              x_.label, {.size = kTextSize, .colour = kInk, .anchor = Anchor::kMiddle});
}

void draw_title(Canvas& canvas, const std::string& title, const std::string& subtitle,
                double kept) {
    constexpr double kTitleSize = 11;
    constexpr double kEdge = 12;
    const double width = canvas.width() - 2 * kEdge;
    draw_text(canvas, {kEdge, 22}, fitted(title, kTitleSize, width),
              {.size = kTitleSize, .colour = kInk, .bold = true});
    draw_text(canvas, {kEdge, 39}, fitted(subtitle, kTextSize, width - kept),
              {.size = kTextSize, .colour = kPaleInk});
}

void draw_colour_bar(Canvas& canvas, const Rect& area, const Palette& palette, double low,
                     double high, const std::string& label, bool whole) {
    for (int y = 0; y < area.height; ++y) {
        const double part = 1 - (y + 0.5) / area.height;
        canvas.fill({area.x, area.y + y, area.width, 1}, palette.at(part));
    }
    const Axes axes(canvas, area, {}, {.low = low, .high = high});
    axes.draw_frame();
    const double step = tick_step(low, high, static_cast<int>(area.height / kBetweenY) + 1, whole);
    double widest = 0;
    for (const double tick : multiples(low, high, step)) {
        const int y =
            std::clamp(static_cast<int>(std::floor(axes.y_of(tick))), area.y - 1, area.bottom());
        canvas.fill({area.right() + 1, y, kTick, 1}, kInk);
        const std::string text = tick_text(tick, step);
        widest = std::max(widest, text_width(text, kTextSize));
        draw_text(canvas, {area.right() + kTick + 5.0, y + kTextSize / 2}, text,
                  {.size = kTextSize, .colour = kInk});
    }
    draw_text(canvas,
              {area.right() + kTick + 5.0 + widest + kTextSize + 6, area.y + area.height / 2.0},
              fitted(label, kTextSize, area.height + kOver),
              {.size = kTextSize, .colour = kInk, .anchor = Anchor::kMiddle, .upward = true});
}

}  // namespace halvern::picture
