#pragma once

#include <string>
#include <string_view>

#include "picture/canvas.h"

namespace halvern::picture {

enum class Anchor { kStart, kMiddle, kEnd };

struct TextStyle {
    double size = 9;  ///< height of a capital letter, pixels
    Colour colour = {40, 40, 40};
    Anchor anchor = Anchor::kStart;  ///< which part of the text `at` is
    bool upward = false;             ///< turned to read from bottom to top
    bool bold = false;
};

/// The letters are lines and arcs of a fixed weight, so that they can be of any size and read
/// upward. Text is UTF-8: printable ASCII, the letters of Latin-1 and a few signs; a box for any
/// other character.
///
/// Draws `text` on the baseline through `at`.
void draw_text(Canvas& canvas, Point at, std::string_view text, const TextStyle& style = {});
/// Width of `text`, pixels.
double text_width(std::string_view text, double size);
/// `text`, or as many of its characters as fit `width` pixels with "..." after them.
std::string fitted(std::string_view text, double size, double width);

}  // namespace halvern::picture
