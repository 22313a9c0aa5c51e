#pragma once

#include <span>

namespace halvern::numerics {

/// Moves evenly spaced samples earlier by a fraction of a sample, in place: sample i becomes the
/// value at i + fraction (0 ... 1) of the natural cubic spline through the samples. Behind the last
/// sample the spline runs on in a straight line, as its curvature is zero there. Straight lines
/// are reproduced exactly but for rounding, up to two samples are joined by one. Where samples are
/// zero, so is the spline, but for 13 of them beside one that is not.
/// `work` holds at least as many doubles as there are samples; with fewer, or a fraction outside
/// 0 ... 1, nothing is done and false comes back. Literature: de Boor, A Practical Guide to Splines
/// (1978), chapter 4.
[[nodiscard]] bool shift_by_spline(std::span<float> samples, double fraction,
                                   std::span<double> work);

}  // namespace halvern::numerics
