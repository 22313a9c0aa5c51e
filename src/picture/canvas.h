#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace halvern::picture {

struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0;
    friend bool operator==(const Colour&, const Colour&) = default;
};
inline constexpr Colour kWhite{255, 255, 255};
inline constexpr Colour kBlack{0, 0, 0};

/// Pixels from the left and from the top; pixel (0, 0) covers the square up to point (1, 1).
struct Point {
    double x = 0, y = 0;
};
using Polyline = std::vector<Point>;

struct Rect {
    int x = 0, y = 0, width = 0, height = 0;
    int right() const { return x + width; }
    int bottom() const { return y + height; }
};

/// A picture of 8-bit RGB pixels, drawn with smooth edges: a pixel that a shape covers in part
/// takes its colour in part.
class Canvas {
public:
    Canvas(int width, int height, Colour background = kWhite);

    int width() const { return width_; }
    int height() const { return height_; }
    std::span<const Colour> pixels() const { return pixels_; }  ///< [height][width]
    Colour at(int x, int y) const { return pixels_[index(x, y)]; }

    /// Nothing is drawn outside `clip` from now on.
    void set_clip(const Rect& clip);
    void clear_clip() { set_clip({0, 0, width_, height_}); }

    void set(int x, int y, Colour colour) {
        if (inside(x, y)) pixels_[index(x, y)] = colour;
    }
    /// `coverage` 0 … 1 of the pixel.
    void blend(int x, int y, Colour colour, double coverage);
    void fill(const Rect& rect, Colour colour);
    /// Lines with round ends and corners; where they cross, they are one shape.
    void stroke(std::span<const Polyline> lines, double width, Colour colour);
    void line(Point from, Point to, double width, Colour colour);
    void polygon(std::span<const Point> corners, Colour colour);
    void disc(Point centre, double radius, Colour colour);

private:
    bool inside(int x, int y) const {
        return x >= clip_.x && x < clip_.right() && y >= clip_.y && y < clip_.bottom();
    }
    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(x);
    }

    int width_, height_;
    Rect clip_;
    std::vector<Colour> pixels_;
    std::vector<float> coverage_;  // work space of stroke and polygon
};

}  // namespace halvern::picture
