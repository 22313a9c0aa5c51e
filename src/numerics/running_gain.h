#pragma once

#include <cstddef>
#include <span>

namespace halvern::numerics {

/// Divides every sample, in place, by the root of the energy in a window around it: for sample j
/// the samples max(0, j - h) ... min(n - 1, j + h - 1), h the half window, 0 ... n / 2. The
/// energies are those of the samples as given.
///
/// The energy is a running sum in doubles, for each step less the sample that leaves and then plus
/// the one that enters, in this order, and its rounding residue is carried along the trace. The
/// root is rounded to single precision; where it is not above zero (silence, a sum below zero
/// through rounding, or samples that are not numbers) the sample stays as it is.
///
/// `energies` is work space of at least n doubles. False, and nothing done, when it is shorter or h
/// is out of range.
[[nodiscard]] bool running_gain(std::span<float> samples, std::size_t half_window,
                                std::span<double> energies);

}  // namespace halvern::numerics
