#include "picture/canvas.h"

#include <algorithm>
#include <cmath>

namespace halvern::picture {

namespace {

std::uint8_t mixed(std::uint8_t below, std::uint8_t above, double part) {
    return static_cast<std::uint8_t>(std::lround(below + (above - below) * part));
}

double distance_to(Point p, Point a, Point b) {
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double squared = dx * dx + dy * dy;
    const double along =
        squared > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / squared, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - (a.x + along * dx), p.y - (a.y + along * dy));
}

/// Whole pixels that a range of points touches, within `first` … `last`.
struct Pixels {
    int first, last;
};
Pixels pixels_of(double low, double high, int first, int end) {
    const auto held = [&](double value) {
        return static_cast<int>(std::clamp(std::floor(value), double(first) - 1, double(end)));
    };
    return {std::max(held(low), first), std::min(held(high), end - 1)};
}

}  // namespace

Canvas::Canvas(int width, int height, Colour background)
    : width_(std::max(width, 1)),
      height_(std::max(height, 1)),
      clip_{0, 0, width_, height_},
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), background) {}

void Canvas::set_clip(const Rect& clip) {
    const int left = std::clamp(clip.x, 0, width_), top = std::clamp(clip.y, 0, height_);
    clip_ = {left, top, std::clamp(clip.right(), left, width_) - left,
             std::clamp(clip.bottom(), top, height_) - top};
}

void Canvas::blend(int x, int y, Colour colour, double coverage) {
    if (!inside(x, y) || !(coverage > 0)) return;
    // In sixteenths: an edge is no smoother with more, and a picture with fewer colours is smaller.
    const double part = std::round(std::min(coverage, 1.0) * 16) / 16;
    Colour& pixel = pixels_[index(x, y)];
    pixel = {mixed(pixel.red, colour.red, part), mixed(pixel.green, colour.green, part),
             mixed(pixel.blue, colour.blue, part)};
}

void Canvas::fill(const Rect& rect, Colour colour) {
    for (int y = std::max(rect.y, clip_.y); y < std::min(rect.bottom(), clip_.bottom()); ++y) {
        for (int x = std::max(rect.x, clip_.x); x < std::min(rect.right(), clip_.right()); ++x) {
            pixels_[index(x, y)] = colour;
        }
    }
}

void Canvas::stroke(std::span<const Polyline> lines, double width, Colour colour) {
    const double reach = width / 2 + 0.5;
    double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
    for (const Polyline& line : lines) {
        for (const Point& point : line) {
            left = std::min(left, point.x - reach);
            right = std::max(right, point.x + reach);
            top = std::min(top, point.y - reach);
            bottom = std::max(bottom, point.y + reach);
        }
    }
    const Pixels columns = pixels_of(left, right, clip_.x, clip_.right());
    const Pixels rows = pixels_of(top, bottom, clip_.y, clip_.bottom());
    if (columns.first > columns.last || rows.first > rows.last) return;
    const auto across = static_cast<std::size_t>(columns.last - columns.first) + 1;
    coverage_.assign(across * (static_cast<std::size_t>(rows.last - rows.first) + 1), 0.0f);
    const auto covered = [&](int x, int y) -> float& {
        return coverage_[static_cast<std::size_t>(y - rows.first) * across +
                         static_cast<std::size_t>(x - columns.first)];
    };
    for (const Polyline& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (i == 0 && line.size() > 1) continue;
            const Point a = line[i > 0 ? i - 1 : 0], b = line[i];
            const Pixels across_segment =
                pixels_of(std::min(a.x, b.x) - reach, std::max(a.x, b.x) + reach, columns.first,
                          columns.last + 1);
            const Pixels down_segment = pixels_of(
                std::min(a.y, b.y) - reach, std::max(a.y, b.y) + reach, rows.first, rows.last + 1);
            for (int y = down_segment.first; y <= down_segment.last; ++y) {
                for (int x = across_segment.first; x <= across_segment.last; ++x) {
                    const double part = reach - distance_to({x + 0.5, y + 0.5}, a, b);
                    float& most = covered(x, y);
                    // A line thinner than a pixel is paler, not thinner.
                    most = std::max(
                        most, static_cast<float>(std::clamp(part, 0.0, std::min(width, 1.0))));
                }
            }
        }
    }
    for (int y = rows.first; y <= rows.last; ++y) {
        for (int x = columns.first; x <= columns.last; ++x) {
            blend(x, y, colour, double{covered(x, y)});
        }
    }
}

void Canvas::line(Point from, Point to, double width, Colour colour) {
    const Polyline points{from, to};
    stroke({&points, 1}, width, colour);
}

void Canvas::polygon(std::span<const Point> corners, Colour colour) {
    if (corners.size() < 3) return;
    double left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
    for (const Point& corner : corners) {
        left = std::min(left, corner.x);
        right = std::max(right, corner.x);
        top = std::min(top, corner.y);
        bottom = std::max(bottom, corner.y);
    }
    constexpr int kParts = 8;  // of a row
    const Pixels rows = pixels_of(top, bottom, clip_.y, clip_.bottom());
    const Pixels columns = pixels_of(left, right, clip_.x, clip_.right());
    std::vector<double> crossings;
    for (int y = rows.first; y <= rows.last; ++y) {
        coverage_.assign(static_cast<std::size_t>(std::max(columns.last - columns.first + 1, 0)),
                         0.0f);
        for (int part = 0; part < kParts; ++part) {
            const double at = y + (part + 0.5) / kParts;
            crossings.clear();
            for (std::size_t i = 0; i < corners.size(); ++i) {
                const Point a = corners[i], b = corners[(i + 1) % corners.size()];
                if ((a.y <= at) == (b.y <= at)) continue;
                crossings.push_back(a.x + (at - a.y) / (b.y - a.y) * (b.x - a.x));
            }
            std::ranges::sort(crossings);
            for (std::size_t i = 0; i + 1 < crossings.size(); i += 2) {
                const double from = crossings[i], to = crossings[i + 1];
                const Pixels inner = pixels_of(from, to, columns.first, columns.last + 1);
                for (int x = inner.first; x <= inner.last; ++x) {
                    const double covered = std::min(to, x + 1.0) - std::max(from, double(x));
                    coverage_[static_cast<std::size_t>(x - columns.first)] +=
                        static_cast<float>(covered / kParts);
                }
            }
        }
        for (int x = columns.first; x <= columns.last; ++x) {
            blend(x, y, colour, double{coverage_[static_cast<std::size_t>(x - columns.first)]});
        }
    }
}

void Canvas::disc(Point centre, double radius, Colour colour) {
    const Pixels rows =
        pixels_of(centre.y - radius - 1, centre.y + radius + 1, clip_.y, clip_.bottom());
    const Pixels columns =
        pixels_of(centre.x - radius - 1, centre.x + radius + 1, clip_.x, clip_.right());
    for (int y = rows.first; y <= rows.last; ++y) {
        for (int x = columns.first; x <= columns.last; ++x) {
            blend(x, y, colour, radius + 0.5 - std::hypot(x + 0.5 - centre.x, y + 0.5 - centre.y));
        }
    }
}

}  // namespace halvern::picture
