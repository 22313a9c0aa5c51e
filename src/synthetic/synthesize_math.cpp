#include "synthetic/synthesize_math.h"

#include <cmath>

namespace halvern::synthetic {

double sine(double radians) {
    // To -pi/2 … pi/2, where the series converges in a few terms.
    const double half_turns = std::floor(radians / kPi + 0.5);
    const double x = radians - half_turns * kPi;
    const bool odd = half_turns - 2 * std::floor(half_turns / 2) != 0;
    double term = x;
    double sum = x;
    for (int n = 2; n <= 16; n += 2) {
        term *= -x * x / (n * (n + 1));
        sum += term;
    }
    return odd ? -sum : sum;
}

double decay(double x) {
    if (x > 700) return 0;
    const double small = x / 1024;
    double term = 1;
    double sum = 1;
    for (int n = 1; n <= 14; ++n) {
        term *= -small / n;
        sum += term;
    }
    for (int i = 0; i < 10; ++i) sum *= sum;
    return sum;
}

}  // namespace halvern::synthetic
