#include <algorithm>
#include <cmath>

#include "picture/axes.h"
#include "plots/survey_pictures.h"

namespace halvern {

namespace {
constexpr std::size_t kMostBins = 4'000'000;

std::int64_t key_of(int x, int y) {
    return std::int64_t{y} * (std::int64_t{1} << 32) + static_cast<std::uint32_t>(x);
}
int low_part(std::int64_t key) { return static_cast<int>(static_cast<std::uint32_t>(key)); }
int high_part(std::int64_t key) { return static_cast<int>(key >> 32); }
}  // namespace

std::string read_fold(TraceSource& source, TraceSelection& selection, Fold& fold) {
    const TraceHeaderDefinition& definition = source.definition();
    const int cdp = definition.find("CDPN");
    const int line = definition.find("INLINE"), cross = definition.find("XLINE");
    source.set_samples_wanted(false);
    std::unordered_map<std::int64_t, int> by_cdp, by_bin;
    while (selection.next()) {
        ++by_cdp[key_of(definition.get_int(cdp), 0)];
        ++by_bin[key_of(definition.get_int(cross), definition.get_int(line))];
        ++fold.traces;
        if (by_cdp.size() > kMostBins || by_bin.size() > kMostBins) {
            return "there are more than 4,000,000 bins; select some of the traces";
        }
    }
    if (fold.traces == 0) return selection.nothing();
    const auto varies = [&](auto&& part_of) {
        return std::ranges::any_of(by_bin, [&](const auto& bin) {
            return part_of(bin.first) != part_of(by_bin.begin()->first);
        });
    };
    fold.is_map = varies(low_part) && varies(high_part);
    if (!fold.is_map && by_cdp.size() == 1 && by_cdp.begin()->first == 0) {
        return "the headers hold no CDP numbers (CDPN), and no bins (INLINE, XLINE)";
    }
    for (const auto& [key, traces] : fold.is_map ? by_bin : by_cdp) {
        fold.bins.push_back({.x = low_part(key), .y = high_part(key), .traces = traces});
    }
    return {};
}

picture::Canvas draw_fold(const Fold& fold, const PictureSize& size, const std::string& title,
                          const std::string& subtitle) {
    using picture::Rect;
    picture::Canvas canvas(size.width, size.height);
    const auto [left, right] = std::ranges::minmax(fold.bins, {}, &Fold::Bin::x);
    const auto [near, far] = std::ranges::minmax(fold.bins, {}, &Fold::Bin::y);
    const auto [least, most] = std::ranges::minmax(fold.bins, {}, &Fold::Bin::traces);
    const picture::Palette& palette = picture::Palette::quantity();
    const double low = left.x - 0.5, high = right.x + 0.5;
    picture::draw_title(canvas, title, subtitle);
    if (!fold.is_map) {
        const Rect area{70, 60, size.width - 70 - 24, size.height - 60 - 48};
        const picture::Axes axes(
            canvas, area, {.low = low, .high = high, .label = "CDP number", .whole = true},
            {.low = 0, .high = most.traces * 1.06, .label = "Fold (traces a CDP)", .whole = true});
        axes.draw_grid();
        canvas.set_clip(area);
        for (const Fold::Bin& bin : fold.bins) {
            const double top = axes.y_of(bin.traces);
            const auto from = static_cast<int>(std::lround(axes.x_of(bin.x - 0.5)));
            const auto to = static_cast<int>(std::lround(axes.x_of(bin.x + 0.5)));
            const auto first = static_cast<int>(std::lround(top));
            canvas.fill({from, first, std::max(to - from, 1), area.bottom() - first},
                        {33, 102, 172});
        }
        canvas.clear_clip();
        axes.draw_frame();
        axes.draw_x_axis();
        axes.draw_y_axis();
        return canvas;
    }
    const Rect area{70, 60, size.width - 70 - 96, size.height - 60 - 48};
    const picture::Axes axes(
        canvas, area, {.low = low, .high = high, .label = "Crossline", .whole = true},
        {.low = near.y - 0.5, .high = far.y + 0.5, .label = "Inline", .whole = true});
    canvas.fill(area, {240, 240, 240});
    // A scale of one value has it in its middle.
    const double bottom = least.traces == most.traces ? least.traces - 1 : least.traces;
    const double top = least.traces == most.traces ? most.traces + 1 : most.traces;
    for (const Fold::Bin& bin : fold.bins) {
        const int x0 = static_cast<int>(std::lround(axes.x_of(bin.x - 0.5)));
        const int x1 = static_cast<int>(std::lround(axes.x_of(bin.x + 0.5)));
        const int y0 = static_cast<int>(std::lround(axes.y_of(bin.y + 0.5)));
        const int y1 = static_cast<int>(std::lround(axes.y_of(bin.y - 0.5)));
        canvas.fill({x0, y0, std::max(x1 - x0, 1), std::max(y1 - y0, 1)},
                    palette.at((bin.traces - bottom) / (top - bottom)));
    }
    axes.draw_frame();
    axes.draw_x_axis();
    axes.draw_y_axis();
    picture::draw_colour_bar(canvas, {area.right() + 16, area.y, 12, std::min(area.height, 220)},
                             palette, bottom, top, "Fold (traces a bin)", true);
    return canvas;
}

}  // namespace halvern
