#pragma once

#include <span>

namespace halvern::numerics {

/// out[i] = sum over j of a[j] b[i - j], for as many i from 0 as `out` has room for; beyond
/// a.size() + b.size() - 1 values, or when either is empty, the rest is zero. `out` must not
/// overlap the others. Direct: the cost is the product of the shorter length and the outputs. The
/// terms of a sum are added with the index into the shorter sequence rising.
void convolve(std::span<const double> a, std::span<const double> b, std::span<double> out);

/// The inverse of convolve by b: the causal x with a = convolve(x, b), for as many samples as `out`
/// has room for, by polynomial division (a is zero beyond its end):
///     out[i] = (a[i] - sum over j > 0 of b[j] out[i - j]) / b[0]
/// It decays only if b is of minimum phase. False, and nothing done, when b is empty or b[0] is 0.
[[nodiscard]] bool deconvolve(std::span<const double> a, std::span<const double> b,
                              std::span<double> out);

/// Sign 1 convolves, sign -1 deconvolves a by b; the whole result has a.size() + b.size() - 1
/// values, and `out` may ask for fewer. Null when done, or why nothing was done, as a line for the
/// log: any other sign, an empty sequence, an `out` that is longer than the result, b[0] = 0.
[[nodiscard]] const char* convolution(std::span<const double> a, std::span<const double> b,
                                      std::span<double> out, int sign);

}  // namespace halvern::numerics
