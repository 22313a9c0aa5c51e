#include "numerics/spline.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace halvern::numerics {

namespace {

// Elimination of the system m[i-1] + 4 m[i] + m[i+1] = right[i] multiplies by these, which settle
// at 2 - sqrt 3 to the last bit long before the table ends.
constexpr std::size_t kSettled = 32;
constexpr std::array<double, kSettled> kPivots = [] {
    std::array<double, kSettled> pivots{};
    double previous = 0;
    for (double& pivot : pivots) previous = pivot = 1 / (4 - previous);
    return pivots;
}();

/// The curvature dies away by 2 - sqrt 3 a sample: this far into zeros, nothing of it is left that
/// a float beside them could hold.
constexpr std::size_t kReach = 13;

/// Makes the spline zero where it would run on through zeros by less than that.
void end_in_zeros(std::span<const float> samples, std::span<double> curvature) {
    const std::size_t n = samples.size();
    for (std::size_t begin = 0, i = 0; i <= n; ++i) {  // zeros from begin to before i
        if (i < n && samples[i] == 0) continue;
        const std::size_t first = begin == 0 ? 0 : begin + kReach;
        const std::size_t end = i == n ? n : i - std::min(i, kReach);
        for (std::size_t k = first; k < end; ++k) curvature[k] = 0;
        begin = i + 1;
    }
}

}  // namespace

bool shift_by_spline(std::span<float> samples, double fraction, std::span<double> work) {
    const std::size_t n = samples.size();
    if (work.size() < n || !(fraction >= 0 && fraction <= 1)) return false;
    if (n < 2) return true;
    const auto pivot = [](std::size_t i) { return kPivots[i < kSettled ? i : kSettled - 1]; };

    // work[i] becomes m[i], a sixth of the curvature at sample i; it is zero at both ends.
    const auto curvature = work.first(n);
    curvature[0] = 0;
    for (std::size_t i = 1; i + 1 < n; ++i) {
        const double second_difference =
            double{samples[i - 1]} - 2 * double{samples[i]} + double{samples[i + 1]};
        curvature[i] = (second_difference - curvature[i - 1]) * pivot(i - 1);
    }
    curvature[n - 1] = 0;
    for (std::size_t i = n - 1; i-- > 1;) curvature[i] -= pivot(i - 1) * curvature[i + 1];
    end_in_zeros(samples, curvature);

    const double f = fraction;
    const double g = 1 - f;
    const double left = g * g * g - g;
    const double right = f * f * f - f;
    const double last_slope = double{samples[n - 1]} - double{samples[n - 2]} + curvature[n - 2];
    for (std::size_t i = 0; i + 1 < n; ++i) {
        samples[i] = static_cast<float>(g * samples[i] + f * samples[i + 1] + left * curvature[i] +
                                        right * curvature[i + 1]);
    }
    samples[n - 1] = static_cast<float>(samples[n - 1] + f * last_slope);
    return true;
}

}  // namespace halvern::numerics
