#pragma once

#include <string>
#include <vector>

#include "picture/canvas.h"
#include "picture/palette.h"

namespace halvern::picture {

/// Round numbers from `low` to `high`, 1, 2 or 5 times a power of ten apart, at most `most` of
/// them (at least 2). Empty when the two do not differ.
std::vector<double> ticks_between(double low, double high, int most);
/// The smallest such distance that `most` ticks or fewer fit with; at least 1 when `whole`.
double tick_step(double low, double high, int most, bool whole = false);
/// `value` with the decimals that ticks `step` apart need.
std::string tick_text(double value, double step);

struct Axis {
    double low = 0, high = 1;  ///< values at the left or bottom and at the right or top edge
    std::string label = {};    ///< with its unit
    bool downward = false;     ///< low is at the top
    bool whole = false;        ///< values are whole numbers: so are ticks
};

/// The rectangle that data are drawn in, with a frame, ticks and labels outside.
class Axes {
public:
    Axes(Canvas& canvas, const Rect& area, Axis x, Axis y)
        : canvas_(canvas), area_(area), x_(std::move(x)), y_(std::move(y)) {}

    const Rect& area() const { return area_; }
    double x_of(double value) const;  ///< pixels
    double y_of(double value) const;

    // Pale lines at the ticks, below the data.
    void draw_grid() const { draw_x_grid(), draw_y_grid(); }
    void draw_x_grid() const;
    void draw_y_grid() const;
    void draw_frame() const;
    void draw_y_axis() const;  ///< ticks and label, on the left
    void draw_x_axis() const;  ///< at the bottom

private:
    double x_step() const;  // between ticks
    double y_step() const;

    Canvas& canvas_;
    Rect area_;
    Axis x_, y_;
};

/// A title and a smaller second line, above everything. What does not fit is cut; the second line
/// ends `kept` pixels before the right edge.
void draw_title(Canvas& canvas, const std::string& title, const std::string& subtitle,
                double kept = 0);

/// The scale of colours, upright in `area`, with ticks to its right.
void draw_colour_bar(Canvas& canvas, const Rect& area, const Palette& palette, double low,
                     double high, const std::string& label, bool whole = false);

/// Letters' height in pictures of this size: pictures for a page need no smaller ones.
inline constexpr double kTextSize = 8;
inline constexpr Colour kInk{45, 45, 45};
inline constexpr Colour kPaleInk{105, 105, 105};
inline constexpr Colour kGrid{226, 226, 226};

}  // namespace halvern::picture
