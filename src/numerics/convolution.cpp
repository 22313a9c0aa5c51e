#include "numerics/convolution.h"

#include <algorithm>

#include "numerics/kernels.h"

namespace halvern::numerics {

void convolve(std::span<const double> a, std::span<const double> b, std::span<double> out) {
    const std::size_t whole = a.empty() || b.empty() ? 0 : a.size() + b.size() - 1;
    const std::size_t outputs = std::min(out.size(), whole);
    if (a.size() < b.size()) std::swap(a, b);
    kernels().convolve(a.data(), a.size(), b.data(), b.size(), out.data(), outputs);
    std::ranges::fill(out.subspan(outputs), 0.0);
}

bool deconvolve(std::span<const double> a, std::span<const double> b, std::span<double> out) {
    if (b.empty() || b[0] == 0) return false;
    for (std::size_t i = 0; i < out.size(); ++i) {
        double rest = i < a.size() ? a[i] : 0.0;
        for (std::size_t j = 1; j < b.size() && j <= i; ++j) rest -= b[j] * out[i - j];
        out[i] = rest / b[0];
    }
    return true;
}

const char* convolution(std::span<const double> a, std::span<const double> b, std::span<double> out,
                        int sign) {
    if (sign != 1 && sign != -1) {
        return "isign must be 1 or -1 for convolution or deconvolution\n";
    }
    if (a.empty() || b.empty()) return "A sequence without samples cannot be convolved.\n";
    if (out.size() > a.size() + b.size() - 1) {
        return "A convolution's result is at most as long as both sequences less one sample.\n";
    }
    if (sign == 1) {
        convolve(a, b, out);
    } else if (!deconvolve(a, b, out)) {
        return "A sequence whose first sample is zero cannot be divided by.\n";
    }
    return nullptr;
}

}  // namespace halvern::numerics
