#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "foundation/words.h"
#include "picture/axes.h"
#include "picture/font.h"
#include "picture/palette.h"
#include "plots/section_plot.h"

namespace halvern {

namespace {

using picture::Canvas;
using picture::Polyline;
using picture::Rect;

constexpr int kTop = 50;  // for the title
constexpr int kRow = 17;  // of header words
constexpr int kLeft = 70;
constexpr int kBottom = 14;
constexpr int kRight = 18;
constexpr int kColourBar = 96;  // with its labels

/// One sample a pixel, or the pixel's strongest where there are more.
class TraceRows {
public:
    TraceRows(int samples, int rows) : samples_(samples), rows_(rows) {}

    double sample_of(double row) const { return row / rows_ * (samples_ - 1); }

    double amplitude(std::span<const float> trace, int row) const {
        const double from = sample_of(row), to = sample_of(row + 1);
        if (to - from <= 2) return interpolated(trace, (from + to) / 2);
        const auto first = static_cast<std::size_t>(from), last = static_cast<std::size_t>(to);
        float strongest = 0;
        for (std::size_t i = first; i <= std::min(last, trace.size() - 1); ++i) {
            if (std::fabs(trace[i]) > std::fabs(strongest)) strongest = trace[i];
        }
        return strongest;
    }

    /// Through four samples (Catmull and Rom's cubic), so that crests are round.
    static double interpolated(std::span<const float> trace, double at) {
        const auto last = static_cast<std::ptrdiff_t>(trace.size()) - 1;
        const auto i = std::clamp(static_cast<std::ptrdiff_t>(std::floor(at)), std::ptrdiff_t{0},
                                  std::max(last - 1, std::ptrdiff_t{0}));
        const double t = at - static_cast<double>(i);
        const auto value = [&](std::ptrdiff_t k) {
            return double{trace[static_cast<std::size_t>(std::clamp(k, std::ptrdiff_t{0}, last))]};
        };
        const double a = value(i - 1), b = value(i), c = value(i + 1), d = value(i + 2);
        return b + t / 2 * (c - a + t * (2 * a - 5 * b + 4 * c - d + t * (3 * (b - c) + d - a)));
    }

private:
    int samples_, rows_;
};

void draw_density(Canvas& canvas, const Rect& area, const Section& section, double full_scale,
                  const picture::Palette& palette) {
    const TraceRows rows(section.samples, area.height);
    const auto traces = std::int64_t{section.traces()};
    std::vector<double> column(static_cast<std::size_t>(area.height));
    for (int x = 0; x < area.width; ++x) {
        const auto first = static_cast<int>(x * traces / area.width);
        const auto end = std::max(static_cast<int>((x + 1) * traces / area.width), first + 1);
        // Where a column has several traces it shows their mean.
        std::ranges::fill(column, 0.0);
        for (int trace = first; trace < end; ++trace) {
            for (int y = 0; y < area.height; ++y) {
                column[static_cast<std::size_t>(y)] += rows.amplitude(section.trace(trace), y);
            }
        }
        const double scale = 0.5 / (full_scale * (end - first));
        for (int y = 0; y < area.height; ++y) {
            canvas.set(area.x + x, area.y + y,
                       palette.at(0.5 + column[static_cast<std::size_t>(y)] * scale));
        }
    }
}

void draw_wiggles(Canvas& canvas, const Rect& area, const Section& section, double full_scale) {
    constexpr int kParts = 4;  // of a pixel row
    const double distance = static_cast<double>(area.width) / section.traces();
    const double swing = 1 / full_scale;
    // In distances of traces: where they are far apart, they need not reach across each other.
    const double most_swing = distance > 40 ? 0.95 : 1.6;
    const TraceRows rows(section.samples, area.height);
    const picture::Colour ink{20, 20, 20};
    canvas.set_clip(area);
    std::vector<Polyline> line(1);
    for (int i = 0; i < section.traces(); ++i) {
        const double base = area.x + (i + 0.5) * distance;
        const std::span<const float> trace = section.trace(i);
        line[0].clear();
        for (int y = 0; y < area.height; ++y) {
            std::array<double, kParts> away{};
            for (int part = 0; part < kParts; ++part) {
                const double row = y + (part + 0.5) / kParts;
                const double amplitude = TraceRows::interpolated(trace, rows.sample_of(row));
                const auto p = static_cast<std::size_t>(part);
                away[p] = std::clamp(amplitude * swing, -most_swing, most_swing) * distance;
                line[0].push_back({base + away[p], area.y + row});
            }
            const double farthest = std::ranges::max(away);
            for (int x = static_cast<int>(base); x < base + farthest; ++x) {
                double covered = 0;
                for (const double a : away) {
                    covered += std::clamp(std::min(base + a, x + 1.0) - std::max(base, double(x)),
                                          0.0, 1.0);
                }
                canvas.blend(x, area.y + y, ink, covered / kParts);
            }
        }
        canvas.stroke(line, std::clamp(distance / 8, 0.4, 1.0), ink);
    }
    canvas.clear_clip();
}

std::string word_text(double value) {
    const bool whole = value == std::floor(value) && std::fabs(value) < 1e12;
    return whole ? std::to_string(static_cast<long long>(value)) : in_words(value);
}

/// Labels of one header word above the traces.
class WordRow {
public:
    WordRow(Canvas& canvas, const Rect& area, const Section::Word& word, int baseline, bool lowest)
        : canvas_(canvas), area_(area), values_(word.values), baseline_(baseline), lowest_(lowest) {
        picture::draw_text(canvas, {area.x - 10.0, double(baseline)}, word.name,
                           {.size = picture::kTextSize,
                            .colour = picture::kPaleInk,
                            .anchor = picture::Anchor::kEnd});
        std::size_t runs = 1;
        for (std::size_t i = 1; i < values_.size(); ++i) runs += values_[i] != values_[i - 1];
        if (runs == 1 || runs * 3 <= values_.size()) {
            label_runs();
        } else if (!label_round_values()) {
            label_regularly();
        }
    }

private:
    static constexpr double kBetween = 16;  // labels, pixels

    double left_of(std::size_t trace) const {
        return area_.x +
               static_cast<double>(trace) * area_.width / static_cast<double>(values_.size());
    }
    double middle_of(std::size_t trace) const { return (left_of(trace) + left_of(trace + 1)) / 2; }

    void tick(double x) const {
        const int length = lowest_ ? 5 : 3;
        const int bottom = lowest_ ? area_.y - 1 : baseline_ + 2 + length;
        canvas_.fill({static_cast<int>(x), bottom - length, 1, length}, picture::kInk);
    }
    void label(double x, const std::string& text) const {
        // Not over the word's name.
        if (x - picture::text_width(text, picture::kTextSize) / 2 < area_.x - 4) return;
        picture::draw_text(canvas_, {x, double(baseline_)}, text,
                           {.size = picture::kTextSize,
                            .colour = picture::kInk,
                            .anchor = picture::Anchor::kMiddle});
    }

    // Neighbours of one value have it in their middle, and a mark between groups.
    void label_runs() const {
        double free_from = area_.x - 20;
        for (std::size_t first = 0, end; first < values_.size(); first = end) {
            for (end = first + 1; end < values_.size() && values_[end] == values_[first];) ++end;
            const double left = left_of(first), right = left_of(end);
            const std::string text = word_text(values_[first]);
            const double half = picture::text_width(text, picture::kTextSize) / 2;
            const double middle = (left + right) / 2;
            if (first > 0 && right - left >= 6) {
                canvas_.fill({static_cast<int>(left), baseline_ - 9, 1, 12}, picture::kPaleInk);
            }
            if (middle - half < free_from) continue;
            label(middle, text);
            free_from = middle + half + kBetween;
        }
    }

    // Multiples of the smallest round number that leaves room between the labels.
    bool label_round_values() const {
        const auto [low, high] = std::ranges::minmax(values_);
        if (!std::isfinite(high - low)) return false;
        constexpr int kFactors[] = {1, 2, 5};
        for (int i = 0;; ++i) {
            const double power = std::pow(10, i / 3);
            if (power > high - low) return false;
            const double step = kFactors[i % 3] * power;
            std::vector<std::size_t> at;
            bool room = true;
            double free_from = -std::numeric_limits<double>::max();
            for (std::size_t trace = 0; trace < values_.size() && room; ++trace) {
                if (std::fmod(values_[trace], step) != 0) continue;
                const double half =
                    picture::text_width(word_text(values_[trace]), picture::kTextSize) / 2;
                room = middle_of(trace) - half >= free_from;
                free_from = middle_of(trace) + half + kBetween;
                at.push_back(trace);
            }
            if (!room) continue;
            if (at.size() < 3) return false;
            for (const std::size_t trace : at) {
                label(middle_of(trace), word_text(values_[trace]));
                tick(middle_of(trace));
            }
            return true;
        }
    }

    void label_regularly() const {
        double widest = 0;
        for (const double value : values_) {
            widest = std::max(widest, picture::text_width(word_text(value), picture::kTextSize));
        }
        const int most = static_cast<int>(area_.width / (widest + kBetween));
        const double last = static_cast<double>(values_.size());
        const auto step = static_cast<std::size_t>(
            values_.size() > 1 ? picture::tick_step(0, last, std::max(most, 2), true) : 1);
        for (std::size_t i = 0; i < values_.size(); i += step) {
            label(middle_of(i), word_text(values_[i]));
            tick(middle_of(i));
        }
    }

    Canvas& canvas_;
    const Rect& area_;
    const std::vector<double>& values_;
    int baseline_;
    bool lowest_;
};

}  // namespace

Rect SectionPlot::area(const Canvas& canvas) const {
    const int top = kTop + kRow * static_cast<int>(section_.words.size()) + 8;
    const int right = has_colour_bar() ? kColourBar : kRight;
    return {kLeft, top, canvas.width() - kLeft - right, canvas.height() - top - kBottom};
}

std::string SectionPlot::caption(int columns) const {
    const std::int64_t first = section_.numbers.front(), last = section_.numbers.back();
    const int traces = section_.traces();
    std::string text;
    if (traces == 1) {
        text = "trace " + in_words(first);
    } else if (last - first + 1 == traces) {
        text = "traces " + in_words(first) + " to " + in_words(last);
    } else {
        text = in_words(traces) + " traces from " + in_words(first) + " to " + in_words(last);
    }
    if (section_.interval_ms == 0) text += ", no sample interval";
    if (options_.agc_ms > 0) text += ", AGC of " + in_words(options_.agc_ms) + " ms";
    if (options_.balance) text += ", traces balanced";
    text += ", full scale " + in_words(full_scale_, 3);
    if (look_.gain != 1) text += ", gain " + in_words(look_.gain, 3);
    if (has_colour_bar() && traces > columns) text += ", a column of pixels is a mean of traces";
    return text;
}

std::string SectionPlot::advice(const Canvas& canvas) const {
    const int width = area(canvas).width;
    if (look_.style != SectionStyle::kWiggle || section_.traces() * 3 <= width) return {};
    return counted(section_.traces(), "trace") + " in " + std::to_string(width) +
           " pixels run into each other; grey shows them better, or a wider picture";
}

Fault SectionPlot::draw(Canvas& canvas, const std::string& title) const {
    constexpr int kLeast = 40;  // pixels
    const Rect area = this->area(canvas);
    if (area.width < kLeast || area.height < kLeast) {
        return Fault("the picture is too small for that many header words");
    }
    const picture::Palette& palette = look_.style == SectionStyle::kRedBlue
                                          ? picture::Palette::red_white_blue()
                                          : picture::Palette::grey();
    picture::draw_title(canvas, title, caption(area.width));
    const bool timed = section_.interval_ms > 0;
    const double step = timed ? section_.interval_ms : 1;
    const picture::Axes axes(canvas, area, {},
                             {.low = section_.start_ms,
                              .high = section_.start_ms + std::max(section_.samples - 1, 1) * step,
                              .label = timed ? "Time (ms)" : "Sample (from 0)",
                              .downward = true,
                              .whole = !timed});
    if (look_.style == SectionStyle::kWiggle) {
        axes.draw_y_grid();
        draw_wiggles(canvas, area, section_, full_scale_);
    } else {
        draw_density(canvas, area, section_, full_scale_, palette);
        picture::draw_colour_bar(canvas,
                                 {area.right() + 16, area.y, 12, std::min(area.height, 220)},
                                 palette, -full_scale_, full_scale_, "Amplitude");
    }
    axes.draw_frame();
    axes.draw_y_axis();
    int baseline = kTop + kRow - 4;
    for (const Section::Word& word : section_.words) {
        const WordRow row(canvas, area, word, baseline, &word == &section_.words.back());
        baseline += kRow;
    }
    return {};
}

}  // namespace halvern
