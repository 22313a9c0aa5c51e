#include "numerics/real_fft.h"

#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace halvern::numerics {

namespace {

constexpr std::int64_t kShortestFast = 256;

struct Root {
    double cosine, sine;
};

/// cos and sin of 2 pi k / n, 0 <= k <= n / 2, from the first eighth of the circle: exact where the
/// result is exact, and with every symmetry exact.
Root root_of_unity(std::int64_t k, std::int64_t n) {
    if (8 * k <= n) {
        const double angle = 2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        return {std::cos(angle), std::sin(angle)};
    }
    if (4 * k <= n) {
        // Past an eighth the angle from the quarter is the shorter one: n / 4 - k, in quarters of
        // n.
        const double angle =
            std::numbers::pi / 2 * static_cast<double>(n - 4 * k) / static_cast<double>(n);
        return {std::sin(angle), std::cos(angle)};
    }
    const auto [cosine, sine] = n % 2 == 0 ? root_of_unity(n / 2 - k, n) : Root{};
    return {-cosine, sine};
}

}  // namespace

std::optional<RealFft> RealFft::make(std::int64_t length) {
    if (length < 2 || length > kMaxLength ||
        !std::has_single_bit(static_cast<std::uint64_t>(length))) {
        return {};
    }
    return RealFft(length);
}

std::int64_t RealFft::length_for(std::int64_t values) {
    if (values > kMaxLength || values < 0) return 0;
    return static_cast<std::int64_t>(
        std::bit_ceil(static_cast<std::uint64_t>(values < 2 ? 2 : values)));
}

RealFft::RealFft(std::int64_t length) : length_(length) {
    const auto half = static_cast<std::size_t>(length / 2);
    roots_.resize(2 * half);
    for (std::size_t k = 0; k < half; ++k) {
        const Root root = root_of_unity(static_cast<std::int64_t>(k), length);
        roots_[k] = root.cosine;
        roots_[half + k] = root.sine;
    }
    if (length >= kShortestFast) use(numerics::kernels());
}

void RealFft::use(const Kernels& kernels) {
    if (length_ < kShortestFast) return;
    kernels_ = &kernels;
    make_tables();
}

void RealFft::make_tables() {
    const auto points = static_cast<std::size_t>(length_ / 2);
    const auto lanes = static_cast<std::size_t>(kernels_->lanes);
    tables_ = {.points = points};
    work_.resize(4 * (points + kFftPadding));
    tables_.work = work_.data();

    // Eights first; the last stage is a four, which leaves room in the registers for its
    // counterpart.
    int bits = std::countr_zero(points);
    std::size_t stride = 1;
    std::size_t size = 0;
    while (bits > 0) {
        const int radix = bits == 5 || bits >= 7 ? 8 : 4;
        bits -= radix == 8 ? 3 : 2;
        const std::size_t groups = points / stride / static_cast<std::size_t>(radix);
        tables_.stage[tables_.stages++] = {.radix = radix, .groups = groups, .stride = stride};
        if (groups > 1) size += 2 * groups * static_cast<std::size_t>(radix - 1);
        stride *= static_cast<std::size_t>(radix);
    }

    twiddles_.resize(size + points);
    double* next = twiddles_.data();
    const auto root = [](std::size_t k, std::size_t of) {
        // exp(-2 pi i k / of): k up to 7/8 of a turn, the second half by its opposite.
        const auto turn = static_cast<std::int64_t>(of);
        const auto at = static_cast<std::int64_t>(k);
        const Root r = root_of_unity(2 * at <= turn ? at : turn - at, turn);
        return std::pair{r.cosine, 2 * at <= turn ? -r.sine : r.sine};
    };
    for (int i = 0; i + 1 < tables_.stages; ++i) {
        FftStage& stage = tables_.stage[i];
        stage.twiddles = next;
        const std::size_t turn = stage.groups * static_cast<std::size_t>(stage.radix);
        const std::size_t together = i == 0 ? lanes : 1;  // groups that are worked on at a time
        for (std::size_t group = 0; group < stage.groups; group += together) {
            for (std::size_t k = 1; k < static_cast<std::size_t>(stage.radix); ++k) {
                for (std::size_t lane = 0; lane < together; ++lane) {
                    const auto [re, im] = root((group + lane) * k, turn);
                    next[lane] = re;
                    next[together + lane] = im;
                }
                next += 2 * together;
            }
        }
    }
    double* const cosines = next;
    double* const sines = next + points / 2;
    for (std::size_t k = 1; k <= points / 2; ++k) {
        const Root r = root_of_unity(static_cast<std::int64_t>(k), length_);
        cosines[k - 1] = r.cosine / 2;
        sines[k - 1] = r.sine / 2;
    }
    tables_.half_cosines = cosines;
    tables_.half_sines = sines;
}

bool RealFft::transform(std::span<double> values, int sign) {
    if (sign == -1) return inverse_start(values, values.size());
    if (!kernels_) return transform_plain(values, sign);
    if (static_cast<std::int64_t>(values.size()) != length_ || sign != 1) return false;
    kernels_->fft_forward(tables_, values.data());
    return true;
}

bool RealFft::inverse_start(std::span<double> values, std::size_t count) {
    if (!kernels_) return transform_plain(values, -1);
    if (static_cast<std::int64_t>(values.size()) != length_) return false;
    kernels_->fft_inverse(tables_, values.data(), count / 2 + count % 2);
    return true;
}

bool RealFft::transform_plain(std::span<double> x, int sign) {
    if (static_cast<std::int64_t>(x.size()) != length_ || (sign != 1 && sign != -1)) return false;
    const std::size_t n = x.size();
    const std::size_t points = n / 2;
    const double* const cosine = roots_.data();
    const double* const sine = cosine + points;

    // From or to the spectra E and O of the even and the odd samples: see the fast transform.
    const auto separate = [&] {
        const double zero = x[0];
        const double nyquist = x[1];
        const double both = sign == 1 ? 1.0 : 0.5;
        x[0] = (zero + nyquist) * both;
        x[1] = (zero - nyquist) * both;
        for (std::size_t k = 1; 2 * k <= points; ++k) {
            double* const u = &x[2 * k];
            double* const v = &x[2 * (points - k)];
            const double er = (u[0] + v[0]) / 2, ei = (u[1] - v[1]) / 2;
            const double dr = (u[0] - v[0]) / 2, di = (u[1] + v[1]) / 2;
            // The difference times exp(-2 pi i k / n) / i, or times i exp(2 pi i k / n).
            const double c = sign == 1 ? cosine[k] : -cosine[k];
            const double s = sine[k];
            const double tr = c * di - s * dr, ti = -(c * dr + s * di);
            u[0] = er + tr;
            u[1] = ei + ti;
            v[0] = er - tr;
            v[1] = ti - ei;
        }
    };

    if (sign == -1) separate();
    for (std::size_t i = 0, j = 0; i < points; ++i) {  // j: the bits of i reversed
        if (j > i) {
            std::swap(x[2 * i], x[2 * j]);
            std::swap(x[2 * i + 1], x[2 * j + 1]);
        }
        std::size_t bit = points >> 1;
        for (; bit > 0 && (j & bit) != 0; bit >>= 1) j ^= bit;
        j |= bit;
    }
    for (std::size_t span = 1; span < points; span *= 2) {
        for (std::size_t j = 0; j < span; ++j) {
            const double wr = cosine[j * (points / span)];
            const double wi = sign * -sine[j * (points / span)];
            for (std::size_t i = j; i < points; i += 2 * span) {
                double* const u = &x[2 * i];
                double* const v = &x[2 * (i + span)];
                const double tr = wr * v[0] - wi * v[1];
                const double ti = wr * v[1] + wi * v[0];
                v[0] = u[0] - tr;
                v[1] = u[1] - ti;
                u[0] += tr;
                u[1] += ti;
            }
        }
    }
    if (sign == 1) separate();
    return true;
}

}  // namespace halvern::numerics
