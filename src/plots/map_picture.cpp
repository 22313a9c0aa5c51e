#include <algorithm>
#include <cmath>
#include <limits>

#include "inspect/trace_statistics.h"
#include "picture/axes.h"
#include "picture/font.h"
#include "plots/survey_pictures.h"
#include "trace/big_endian.h"

namespace halvern {

namespace {

using picture::Canvas;
using picture::Point;
using picture::Rect;

constexpr std::size_t kMostPlaces = 2'000'000;
constexpr const char* kNames[] = {"Sources", "Receivers", "CDPs"};

/// The sum of a header word over the traces at one place.
struct Sum {
    double x = 0, y = 0, value = 0;
    std::int64_t traces = 0;
};
using Places = std::unordered_map<std::int64_t, Sum>;

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

void draw_marker(Canvas& canvas, SurveyMap::Kind kind, Point at, picture::Colour colour) {
    const picture::Colour edge{60, 60, 60};
    const auto triangle = [&](double r, picture::Colour c) {
        const Point corners[] = {
            {at.x - r, at.y - r * 0.75}, {at.x + r, at.y - r * 0.75}, {at.x, at.y + r * 0.95}};
        canvas.polygon(corners, c);
    };
    switch (kind) {
        case SurveyMap::kSource:
            canvas.disc(at, 4.4, edge);
            canvas.disc(at, 3.6, colour);
            break;
        case SurveyMap::kReceiver:
            triangle(5.6, edge);
            triangle(4.1, colour);
            break;
        case SurveyMap::kCdp:
            canvas.disc(at, 1.9, colour);
            break;
    }
}

void draw_legend(Canvas& canvas, const SurveyMap& map, int right) {
    double x = right;
    for (int kind = SurveyMap::kKinds - 1; kind >= 0; --kind) {
        if (map.places[kind].empty()) continue;
        picture::draw_text(canvas, {x, 39}, kNames[kind],
                           {.size = picture::kTextSize, .anchor = picture::Anchor::kEnd});
        x -= picture::text_width(kNames[kind], picture::kTextSize) + 11;
        draw_marker(canvas, static_cast<SurveyMap::Kind>(kind), {x, 35}, {150, 150, 150});
        x -= 22;
    }
}

}  // namespace

std::string read_map(TraceSource& source, TraceSelection& selection, const std::string& word,
                     SurveyMap& map) {
    const TraceHeaderDefinition& definition = source.definition();
    const int index = definition.find(word);
    if (index < 0 && !word.empty()) return "the header description has no word '" + word + "'";
    constexpr std::pair<const char*, const char*> kWords[] = {
        {"SRCX", "SRCY"}, {"RECX", "RECY"}, {"CDPX", "CDPY"}};
    const int scalar = definition.find("COORSCAL");
    std::pair<int, int> words[SurveyMap::kKinds];
    for (int kind = 0; kind < SurveyMap::kKinds; ++kind) {
        words[kind] = {definition.find(kWords[kind].first), definition.find(kWords[kind].second)};
    }
    source.set_samples_wanted(false);
    Places places[SurveyMap::kKinds];
    while (selection.next()) {
        ++map.traces;
        const double scale = coordinate_scale(definition.get_double(scalar));
        for (int kind = 0; kind < SurveyMap::kKinds; ++kind) {
            const int x = definition.get_int(words[kind].first);
            const int y = definition.get_int(words[kind].second);
            Sum& sum = places[kind][std::int64_t{x} * (std::int64_t{1} << 32) + y];
            sum.x = x * scale;
            sum.y = y * scale;
            sum.value += definition.get_double(index);
            ++sum.traces;
        }
        if (std::ranges::any_of(places, [](const Places& p) { return p.size() > kMostPlaces; })) {
            return "there are more than 2,000,000 positions; select some of the traces";
        }
    }
    if (map.traces == 0) return selection.nothing();
    bool any = false;
    for (int kind = 0; kind < SurveyMap::kKinds; ++kind) {
        // One place at (0, 0) is no place: the words were not filled.
        if (places[kind].size() == 1 && places[kind].contains(0)) continue;
        any = true;
        for (const auto& [key, sum] : places[kind]) {
            const auto traces = static_cast<double>(sum.traces);
            map.places[kind].push_back(
                {.x = sum.x, .y = sum.y, .value = index < 0 ? traces : sum.value / traces});
        }
        std::ranges::sort(map.places[kind], {},
                          [](const SurveyMap::Place& p) { return std::pair(p.x, p.y); });
    }
    if (!any) return "the headers hold no positions (SRCX, SRCY, RECX, RECY, CDPX, CDPY)";
    map.unit = unit_of(source.line());
    return {};
}

picture::Canvas draw_map(const SurveyMap& map, const std::string& word, const PictureSize& size,
                         const std::string& title, const std::string& subtitle) {
    constexpr double kMostStretch = 8;  // of one axis, for positions that show as a thin line
    Canvas canvas(size.width, size.height);
    picture::draw_title(canvas, title, subtitle);
    const Rect whole{88, 60, size.width - 88 - 104, size.height - 60 - 48};
    draw_legend(canvas, map, whole.right());

    Extent x, y, value;
    std::vector<SurveyMap::Kind> kinds;
    for (const SurveyMap::Kind kind : {SurveyMap::kCdp, SurveyMap::kReceiver, SurveyMap::kSource}) {
        if (map.places[kind].empty()) continue;
        kinds.push_back(kind);
        for (const SurveyMap::Place& place : map.places[kind]) {
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
    const std::string unit = map.unit.empty() ? "" : " (" + map.unit + ")";
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
            for (const SurveyMap::Place& place : map.places[kinds[i]]) {
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
                             word.empty() ? "Traces at a position" : word, word.empty());
    return canvas;
}

}  // namespace halvern
