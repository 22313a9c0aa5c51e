#include "picture/palette.h"

#include <algorithm>
#include <cmath>

namespace halvern::picture {

// Anchors are evenly spaced. Their lightness (CIE L*) is even, too, or symmetric to the middle.
template <std::size_t N>
Palette::Palette(const Colour (&anchors)[N]) {
    for (std::size_t i = 0; i < colours_.size(); ++i) {
        const double at = static_cast<double>(i) / (kColours - 1) * (N - 1);
        const std::size_t below = std::min(static_cast<std::size_t>(at), N - 2);
        const double part = at - static_cast<double>(below);
        const auto mix = [&](std::uint8_t a, std::uint8_t b) {
            return static_cast<std::uint8_t>(std::lround(a + (b - a) * part));
        };
        const Colour a = anchors[below], b = anchors[below + 1];
        colours_[i] = {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
    }
}

const Palette& Palette::grey() {
    static const Palette palette({{255, 255, 255}, {0, 0, 0}});
    return palette;
}

const Palette& Palette::red_white_blue() {
    static const Palette palette({{103, 0, 31},
                                  {178, 24, 43},
                                  {214, 96, 77},
                                  {244, 165, 130},
                                  {253, 219, 199},
                                  {250, 250, 250},
                                  {209, 229, 240},
                                  {146, 197, 222},
                                  {67, 147, 195},
                                  {33, 102, 172},
                                  {5, 48, 97}});
    return palette;
}

const Palette& Palette::quantity() {
    static const Palette palette({{68, 1, 84},
                                  {71, 44, 122},
                                  {59, 81, 139},
                                  {44, 113, 142},
                                  {33, 144, 141},
                                  {39, 173, 129},
                                  {92, 200, 99},
                                  {170, 220, 50},
                                  {253, 231, 37}});
    return palette;
}

Colour Palette::at(double part) const {
    const double index = std::isnan(part) ? 0 : std::clamp(part, 0.0, 1.0) * (kColours - 1);
    return colours_[static_cast<std::size_t>(std::lround(index))];
}

}  // namespace halvern::picture
