#pragma once

#include <string>

#include "picture/canvas.h"
#include "plots/section.h"

namespace halvern {

struct PictureSize {
    int width = 1000;
    int height = 700;
};

enum class SectionStyle { kGrey, kRedBlue, kWiggle };

struct SectionLook {
    PictureSize size;
    SectionStyle style = SectionStyle::kGrey;
    double full_scale =
        1;  ///< the amplitude of the darkest colour, or of a swing to the next trace
    std::string title;
    std::string subtitle;
};

/// Where the traces are in the picture: the columns of trace i of n begin at x + width i / n, the
/// first and last sample are at the top and bottom edge.
picture::Rect section_area(const Section& section, const SectionLook& look);

/// Time downward, traces from left to right, header words above them.
picture::Canvas draw_section(const Section& section, const SectionLook& look);

}  // namespace halvern
