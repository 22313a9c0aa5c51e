#include "plots/map_plot.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/words.h"
#include "picture/axes.h"
#include "picture/font.h"
#include "trace/big_endian.h"

namespace halvern {

namespace {

using picture::Canvas;
using picture::Point;
using picture::Rect;

constexpr std::size_t kMostPlaces = 2'000'000;
constexpr const char* kNames[] = {"Sources", "Receivers", "CDPs"};

std::string unit_of(const LineHeader& line) {
    constexpr std::size_t kMeasurementSystem = 3254;
    switch (get_i16(line.bytes().subspan<kMeasurementSystem, 2>())) {
        case 1:
            return "m";
        case 2:
            return "ft";
        default:
            return {};
    }
}

/// A coordinate's range, widened so that no marker is on the frame.
struct Extent {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    void add(double value) {
        low = std::min(low, value);
        high = std::max(high, value);
    }
    double length() const { return high - low; }
    void widen(double by) {
        low -= by;
        high += by;
    }
};

void draw_marker(Canvas& canvas, MapPlot::Kind kind, Point at, picture::Colour colour) {
    const picture::Colour edge{60, 60, 60};
    const auto triangle = [&](double r, picture::Colour c) {
        const Point corners[] = {
            {at.x - r, at.y - r * 0.75}, {at.x + r, at.y - r * 0.75}, {at.x, at.y + r * 0.95}};
        canvas.polygon(corners, c);
    };
    switch (kind) {
        case MapPlot::kSource:
            canvas.disc(at, 4.4, edge);
            canvas.disc(at, 3.6, colour);
            break;
        case MapPlot::kReceiver:
            triangle(5.6, edge);
            triangle(4.1, colour);
            break;
        case MapPlot::kCdp:
            canvas.disc(at, 1.9, colour);
            break;
    }
}

}  // namespace

double MapPlot::draw_legend(Canvas& canvas, int right) const {
    double x = right;
    for (int kind = kKinds - 1; kind >= 0; --kind) {
        if (places_[kind].empty()) continue;
        picture::draw_text(canvas, {x, 39}, kNames[kind],
                           {.size = picture::kTextSize, .anchor = picture::Anchor::kEnd});
        x -= picture::text_width(kNames[kind], picture::kTextSize) + 11;
        draw_marker(canvas, static_cast<Kind>(kind), {x, 35}, {150, 150, 150});
        x -= 22;
    }
    return x;
}

Fault MapPlot::begin(const LineHeader& line, const TraceHeaderDefinition& definition) {
    *this = MapPlot(options_);
    word_ = definition.find(options_.word);
    if (word_ < 0 && !options_.word.empty()) {
        return Fault("the header description has no word '" + options_.word + "'");
    }
    constexpr std::pair<const char*, const char*> kWords[] = {
        {"SRCX", "SRCY"}, {"RECX", "RECY"}, {"CDPX", "CDPY"}};
    scalar_ = definition.find("COORSCAL");
    for (int kind = 0; kind < kKinds; ++kind) {
        position_[kind] = {definition.find(kWords[kind].first),
                           definition.find(kWords[kind].second)};
    }
    unit_ = unit_of(line);
    return {};
}

Fault MapPlot::add(const TraceHeaderDefinition& definition, TraceSamples&, std::int64_t) {
    ++traces_;
    const double scale = scalar_factor(definition.get_double(scalar_));
    for (int kind = 0; kind < kKinds; ++kind) {
        const int x = definition.get_int(position_[kind].first);
        const int y = definition.get_int(position_[kind].second);
        Sum& sum = sums_[kind][std::int64_t{x} * (std::int64_t{1} << 32) + y];
        sum.x = x * scale;
        sum.y = y * scale;
        sum.value += definition.get_double(word_);
        ++sum.traces;
        if (sums_[kind].size() > kMostPlaces) {
            return Fault("there are more than 2,000,000 positions; select some of the traces");
        }
    }
    return {};
}

Fault MapPlot::finish() {
    if (traces_ == 0) return Fault("there is no trace");
    bool any = false;
    for (int kind = 0; kind < kKinds; ++kind) {
        // One place at (0, 0) is no place: the words were not filled.
        if (sums_[kind].size() == 1 && sums_[kind].contains(0)) continue;
        any = true;
        for (const auto& [key, sum] : sums_[kind]) {
            const auto traces = static_cast<double>(sum.traces);
            places_[kind].push_back(
                {.x = sum.x, .y = sum.y, .value = word_ < 0 ? traces : sum.value / traces});
        }
        std::ranges::sort(places_[kind], {},
                          [](const Place& place) { return std::pair(place.x, place.y); });
    }
    if (any) return {};
    return Fault("the headers hold no positions (SRCX, SRCY, RECX, RECY, CDPX, CDPY)");
}

Fault MapPlot::draw(Canvas& canvas, const std::string& title) const {
    constexpr double kMostStretch = 8;  // of one axis, for positions that show as a thin line
    const Rect whole{88, 60, canvas.width() - 88 - 104, canvas.height() - 60 - 48};
    const double left = draw_legend(canvas, canvas.width() - 12);
    picture::draw_title(canvas, title, "positions of " + counted(traces_, "trace"),
                        canvas.width() - left);

    Extent x, y, value;
    std::vector<Kind> kinds;
    for (const Kind kind : {kCdp, kReceiver, kSource}) {
        if (places_[kind].empty()) continue;
        kinds.push_back(kind);
        for (const Place& place : places_[kind]) {
            x.add(place.x);
            y.add(place.y);
            value.add(place.value);
        }
    }
    if (value.length() == 0) value.widen(1);
    if (x.length() == 0 && y.length() == 0) x.widen(1);

    // Both axes have one scale, unless the positions are a line along one of them. Then everything
    // would lie on top of each other, and each kind gets a strip of its own.
    const bool strips =
        std::min(x.length(), y.length()) * kMostStretch < std::max(x.length(), y.length());
    if (strips) {
        const double least = std::max(x.length(), y.length()) / 1000;
        x.widen(std::max(x.length() * 0.03, x.length() == 0 ? least : 0.0));
        y.widen(std::max(y.length() * 0.15, y.length() == 0 ? least : 0.0));
    } else {
        const double scale = std::max(x.length() / whole.width, y.length() / whole.height) * 1.06;
        x.widen((whole.width * scale - x.length()) / 2);
        y.widen((whole.height * scale - y.length()) / 2);
    }
    const std::string unit = unit_.empty() ? "" : " (" + unit_ + ")";
    const picture::Palette& palette = picture::Palette::quantity();
    const int count = strips ? static_cast<int>(kinds.size()) : 1;
    const int height = (whole.height - 22 * (count - 1)) / count;
    for (int strip = 0; strip < count; ++strip) {
        // Sources uppermost, in strips as well as on top of each other.
        const Rect area{whole.x, whole.y + strip * (height + 22), whole.width, height};
        const std::size_t chosen = kinds.size() - 1 - static_cast<std::size_t>(strip);
        const picture::Axes axes(
            canvas, area, {.low = x.low, .high = x.high, .label = "X" + unit},
            {.low = y.low,
             .high = y.high,
             .label = (strips ? std::string(kNames[kinds[chosen]]) + ": Y" : "Y") + unit});
        axes.draw_grid();
        for (std::size_t i = 0; i < kinds.size(); ++i) {
            if (strips && i != chosen) continue;
            for (const Place& place : places_[kinds[i]]) {
                draw_marker(canvas, kinds[i], {axes.x_of(place.x), axes.y_of(place.y)},
                            palette.at((place.value - value.low) / value.length()));
            }
        }
        axes.draw_frame();
        axes.draw_y_axis();
        if (strip + 1 == count) axes.draw_x_axis();
    }
    picture::draw_colour_bar(canvas, {whole.right() + 16, whole.y, 12, std::min(whole.height, 220)},
                             palette, value.low, value.high,
                             options_.word.empty() ? "Traces at a position" : options_.word,
                             options_.word.empty());
    return {};
}

}  // namespace halvern
