#include "plots/fold_plot.h"

#include <algorithm>
#include <cmath>

#include "foundation/words.h"
#include "picture/axes.h"

namespace halvern {

namespace {
constexpr std::size_t kMostBins = 4'000'000;

std::int64_t key_of(int x, int y) {
    return std::int64_t{y} * (std::int64_t{1} << 32) + static_cast<std::uint32_t>(x);
}
int low_part(std::int64_t key) { return static_cast<int>(static_cast<std::uint32_t>(key)); }
int high_part(std::int64_t key) { return static_cast<int>(key >> 32); }
}  // namespace

Fault FoldPlot::begin(const LineHeader&, const TraceHeaderDefinition& definition) {
    *this = {};
    cdp_ = definition.find("CDPN");
    inline_ = definition.find("INLINE");
    crossline_ = definition.find("XLINE");
    fold_ = definition.find("FOLD");
    return {};
}

Fault FoldPlot::add(const TraceHeaderDefinition& definition, TraceSamples&, std::int64_t) {
    const int fold = std::max(definition.get_int(fold_), 1);
    by_cdp_[key_of(definition.get_int(cdp_), 0)] += fold;
    by_bin_[key_of(definition.get_int(crossline_), definition.get_int(inline_))] += fold;
    ++traces_;
    stacked_ += fold;
    if (by_cdp_.size() <= kMostBins && by_bin_.size() <= kMostBins) return {};
    return Fault("there are more than 4,000,000 bins; select some of the traces");
}

Fault FoldPlot::finish() {
    if (traces_ == 0) return Fault("there is no trace");
    const auto varies = [&](auto&& part_of) {
        return std::ranges::any_of(by_bin_, [&](const auto& bin) {
            return part_of(bin.first) != part_of(by_bin_.begin()->first);
        });
    };
    is_map_ = varies(low_part) && varies(high_part);
    if (!is_map_ && by_cdp_.size() == 1 && by_cdp_.begin()->first == 0) {
        return Fault("the headers hold no CDP numbers (CDPN), and no bins (INLINE, XLINE)");
    }
    for (const auto& [key, traces] : is_map_ ? by_bin_ : by_cdp_) {
        bins_.push_back({.x = low_part(key), .y = high_part(key), .traces = traces});
    }
    return {};
}

Fault FoldPlot::draw(picture::Canvas& canvas, const std::string& title) const {
    using picture::Rect;
    const int width = canvas.width(), height = canvas.height();
    std::string caption = counted(traces_, stacked_ > traces_ ? "stacked trace" : "trace") +
                          " in " + counted(std::ssize(bins_), is_map_ ? "bin" : "CDP");
    if (stacked_ > traces_) caption += ", fold by FOLD";
    const auto [left, right] = std::ranges::minmax(bins_, {}, &Bin::x);
    const auto [near, far] = std::ranges::minmax(bins_, {}, &Bin::y);
    const auto [least, most] = std::ranges::minmax(bins_, {}, &Bin::traces);
    const picture::Palette& palette = picture::Palette::quantity();
    const double low = left.x - 0.5, high = right.x + 0.5;
    picture::draw_title(canvas, title, caption);
    if (!is_map_) {
        const Rect area{70, 60, width - 70 - 24, height - 60 - 48};
        const picture::Axes axes(canvas, area,
                                 {.low = low, .high = high, .label = "CDP number", .whole = true},
                                 {.low = 0,
                                  .high = static_cast<double>(most.traces) * 1.06,
                                  .label = "Fold (traces a CDP)",
                                  .whole = true});
        axes.draw_grid();
        canvas.set_clip(area);
        for (const Bin& bin : bins_) {
            const double top = axes.y_of(static_cast<double>(bin.traces));
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
        return {};
    }
    const Rect area{70, 60, width - 70 - 96, height - 60 - 48};
    const picture::Axes axes(
        canvas, area, {.low = low, .high = high, .label = "Crossline", .whole = true},
        {.low = near.y - 0.5, .high = far.y + 0.5, .label = "Inline", .whole = true});
    canvas.fill(area, {240, 240, 240});
    // A scale of one value has it in its middle.
    const bool one = least.traces == most.traces;
    const auto bottom = static_cast<double>(one ? least.traces - 1 : least.traces);
    const auto top = static_cast<double>(one ? most.traces + 1 : most.traces);
    for (const Bin& bin : bins_) {
        const int x0 = static_cast<int>(std::lround(axes.x_of(bin.x - 0.5)));
        const int x1 = static_cast<int>(std::lround(axes.x_of(bin.x + 0.5)));
        const int y0 = static_cast<int>(std::lround(axes.y_of(bin.y + 0.5)));
        const int y1 = static_cast<int>(std::lround(axes.y_of(bin.y - 0.5)));
        canvas.fill({x0, y0, std::max(x1 - x0, 1), std::max(y1 - y0, 1)},
                    palette.at((static_cast<double>(bin.traces) - bottom) / (top - bottom)));
    }
    axes.draw_frame();
    axes.draw_x_axis();
    axes.draw_y_axis();
    picture::draw_colour_bar(canvas, {area.right() + 16, area.y, 12, std::min(area.height, 220)},
                             palette, bottom, top, "Fold (traces a bin)", true);
    return {};
}

}  // namespace halvern
