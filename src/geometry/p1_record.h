#pragma once

#include <span>
#include <string>
#include <string_view>

#include "geometry/p1_file.h"

namespace halvern {

/// Streamers have one column: 1 … 9, then A for 10 and so on.
inline constexpr int kMostP1Streamers = 35;
/// Of a P1/90 receiver group record.
inline constexpr int kMostP1Groups = 3;

struct NumberedP1Group {
    int number = 0;
    P1Group group;
};

// Each appends one line of 80 columns with its end. The last two give how many numbers did not fit
// their columns, which then stay blank.

/// A header line: its code ("H0100"), a description of up to 27 characters and data of up to 48.
void append_p1_header(std::string& text, std::string_view code, std::string_view description,
                      std::string_view data);
/// A position of vessel and source 1. Its line's number is the line name; NaN is left blank, and
/// day and time are when the day is 0.
int append_p1_position(std::string& text, char letter, const P1Position& position);
/// Up to three groups of a streamer, 1 to kMostP1Streamers.
int append_p1_groups(std::string& text, int streamer, std::span<const NumberedP1Group> groups);

}  // namespace halvern
