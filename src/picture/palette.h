#pragma once

#include <array>

#include "picture/canvas.h"

namespace halvern::picture {

/// The colours from one end of a scale to the other, few enough for a picture to be stored with a
/// byte a pixel. All keep their order in grey print and for
/// people who cannot tell red from green; the two-sided one does so on each side of its middle.
class Palette {
public:
    /// White to black: for amplitudes, whose largest are black.
    static const Palette& grey();
    /// Red through white to blue, equally dark at both ends: for amplitudes of either sign.
    static const Palette& red_white_blue();
    /// Dark blue through green to yellow, evenly brighter: for quantities.
    static const Palette& quantity();

    /// The colour at `part`, 0 … 1; beyond that the end's.
    Colour at(double part) const;

private:
    template <std::size_t N>
    explicit Palette(const Colour (&anchors)[N]);
    static constexpr std::size_t kColours = 129;  // odd: the middle of a scale has one of its own
    std::array<Colour, kColours> colours_;
};

}  // namespace halvern::picture
