#pragma once

#include <span>

namespace halvern::numerics {

/// The elementary functions of many values at once, several times as fast as one by one and the
/// same on every processor. The error is below 2 units in the last place. Results may replace the
/// arguments: spans are either the same or do not overlap. All spans of a call are equally long;
/// false, and nothing done, when they are not. Literature: Cody and Waite, Software Manual for the
/// Elementary Functions (1980).

/// Natural logarithms; -infinity of 0, NaN of what is below 0 or not a number.
bool logarithms(std::span<const double> x, std::span<double> out);

/// Exponentials; infinity above 709.78, denormal numbers and then 0 below -708.4.
bool exponentials(std::span<const double> x, std::span<double> out);

/// Sines and cosines of angles in radians; NaN of what is not finite. Near the zeros the error is
/// 1e-20 absolute for angles up to 100,000; larger angles are left to the standard library.
bool sines_and_cosines(std::span<const double> angles, std::span<double> sines,
                       std::span<double> cosines);

}  // namespace halvern::numerics
