#include "numerics/resampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <numeric>

#include "numerics/kernels.h"

namespace halvern::numerics {

namespace {

constexpr double kPi = std::numbers::pi;
constexpr std::int64_t kInterpolatorHalf = 32;
constexpr double kInterpolatorDecibels = 100;
constexpr double kAntialiasDecibels = 90;
constexpr std::int64_t kMostHalf = 1'000'000;
// Products of a ratio's numbers up to here are resampled phase by phase.
constexpr std::int64_t kSmallRatio = 64;
constexpr std::int64_t kMostRows = 512;  // linear between two of them: an error of 2e-6

// Kaiser's formulas: the window's shape for an attenuation, and the operator's length for a ramp.
double kaiser_beta(double decibels) { return 0.1102 * (decibels - 8.7); }
double kaiser_length(double decibels, double ramp_radians) {
    return (decibels - 8) / (2.285 * ramp_radians);
}

// Zero at whole numbers exactly, so that samples which coincide are copied.
double sinc(double x) {
    if (x == 0) return 1;
    if (x == std::floor(x)) return 0;
    return std::sin(kPi * x) / (kPi * x);
}

// Several sums at a time, so that a compiler may work on them in one register.
double product_sum(const double* a, const double* b, std::size_t count) {
    constexpr std::size_t kSums = 8;
    double sums[kSums] = {};
    std::size_t i = 0;
    for (; i + kSums <= count; i += kSums) {
        for (std::size_t s = 0; s < kSums; ++s) sums[s] += a[i + s] * b[i + s];
    }
    for (std::size_t s = 0; i < count; ++i, ++s) sums[s] += a[i] * b[i];
    return ((sums[0] + sums[4]) + (sums[1] + sums[5])) +
           ((sums[2] + sums[6]) + (sums[3] + sums[7]));
}

}  // namespace

std::int64_t Resampler::samples_after(const Change& change) {
    return (change.samples - 1) * change.old_interval / change.new_interval + 1;
}

std::optional<Resampler> Resampler::make(const Change& change) {
    if (change.samples < 1 || change.old_interval < 1 || change.new_interval < 1) return {};
    if (!(change.corner > 0) || change.corner > kLargestCorner) return {};
    const std::int64_t common = std::gcd(change.old_interval, change.new_interval);
    Resampler made;
    made.step_ = change.new_interval / common;
    made.phases_ = change.old_interval / common;
    made.rows_ = std::min(made.phases_, kMostRows);
    made.half_ = kInterpolatorHalf;
    double cutoff = 1, beta = kaiser_beta(kInterpolatorDecibels);  // of the old Nyquist frequency
    if (change.antialias && change.new_interval > change.old_interval) {
        const double nyquist =
            static_cast<double>(change.old_interval) / static_cast<double>(change.new_interval);
        const double ramp = (1 - change.corner) * nyquist;
        const double half = std::ceil(kaiser_length(kAntialiasDecibels, kPi * ramp) / 2);
        if (half > static_cast<double>(kMostHalf)) return {};
        made.half_ = static_cast<std::int64_t>(half);
        cutoff = nyquist - ramp / 2;
        beta = kaiser_beta(kAntialiasDecibels);
    }
    made.scales_.resize(static_cast<std::size_t>(samples_after(change)));
    made.padded_.resize(static_cast<std::size_t>(change.samples + 2 * made.half_));
    made.make_weights(cutoff, beta);
    made.make_scales();
    if (made.step_ * made.phases_ <= kSmallRatio) made.make_phases();
    return made;
}

void Resampler::make_weights(double cutoff, double beta) {
    const auto taps = static_cast<std::size_t>(2 * half_);
    weights_.resize(static_cast<std::size_t>(rows_ + 1) * taps);
    for (std::int64_t row = 0; row <= rows_; ++row) {
        double* const weights = weights_.data() + static_cast<std::size_t>(row) * taps;
        const double fraction = static_cast<double>(row) / static_cast<double>(rows_);
        for (std::size_t tap = 0; tap < taps; ++tap) {
            // From the sample of this weight to the place of the output.
            const double x =
                fraction - static_cast<double>(static_cast<std::int64_t>(tap) - half_ + 1);
            const double along = x / static_cast<double>(half_);
            const double window =
                std::cyl_bessel_i(0.0, beta * std::sqrt(std::max(0.0, 1 - along * along)));
            weights[tap] = cutoff * sinc(cutoff * x) * window;
        }
        const double sum = std::accumulate(weights, weights + taps, 0.0);
        for (std::size_t tap = 0; tap < taps; ++tap) weights[tap] /= sum;
    }
}

// What each output's weights within the trace sum up to is what a trace of ones gives.
void Resampler::make_scales() {
    std::fill_n(padded_.begin() + static_cast<std::ptrdiff_t>(half_), samples(), 1.0);
    for (std::int64_t k = 0; k < outputs(); ++k) {
        const bool inside = first_sample(k) >= half_ && first_sample(k) + half_ < samples();
        const double sum = inside ? 1 : value(k);
        scales_[static_cast<std::size_t>(k)] = 1 / sum;
    }
}

double Resampler::value(std::int64_t output) const {
    const auto taps = static_cast<std::size_t>(2 * half_);
    // The first weight is that of the sample half - 1 before the one at or before the output.
    const double* const from = padded_.data() + first_sample(output) + 1;
    const std::int64_t phase = output * step_ % phases_;
    const auto row_weights = [&](std::int64_t row) {
        return weights_.data() + static_cast<std::size_t>(row) * taps;
    };
    if (rows_ == phases_) return product_sum(row_weights(phase), from, taps);
    const double place =
        static_cast<double>(phase) * static_cast<double>(rows_) / static_cast<double>(phases_);
    const auto row = static_cast<std::int64_t>(place);
    const double share = place - static_cast<double>(row);
    return (1 - share) * product_sum(row_weights(row), from, taps) +
           share * product_sum(row_weights(row + 1), from, taps);
}

void Resampler::make_phases() {
    const auto taps = static_cast<std::size_t>(2 * half_);
    const auto step = static_cast<std::size_t>(step_);
    stream_length_ = (padded_.size() + step - 1) / step;
    streams_.assign(step * stream_length_, 0.0);
    const auto most = static_cast<std::size_t>((outputs() + phases_ - 1) / phases_);
    sums_.resize(most);
    part_.resize(most);
    phase_.resize(static_cast<std::size_t>(phases_));
    for (std::size_t r = 0; r < phase_.size(); ++r) {
        const auto output = static_cast<std::int64_t>(r);
        const double* const row =
            weights_.data() + static_cast<std::size_t>(output * step_ % phases_) * taps;
        phase_[r].copies = row[half_ - 1] == 1;  // the others are zero then
        const auto from = static_cast<std::size_t>(first_sample(output) + 1);
        for (std::size_t tap = 0; tap < std::min(step, taps); ++tap) {
            Part part{.weights = {}, .stream = (from + tap) % step, .first = (from + tap) / step};
            for (std::size_t at = tap; at < taps; at += step) part.weights.push_back(row[at]);
            phase_[r].parts.push_back(std::move(part));
        }
    }
}

void Resampler::resample_by_phases(std::span<float> out) {
    const Kernels& run = kernels();
    const auto step = static_cast<std::size_t>(step_);
    const auto phases = static_cast<std::size_t>(phases_);
    for (std::size_t stream = 0; stream < step; ++stream) {
        double* to = streams_.data() + stream * stream_length_;
        for (std::size_t at = stream; at < padded_.size(); at += step) *to++ = padded_[at];
    }
    for (std::size_t r = 0; r < phases && r < out.size(); ++r) {
        const std::size_t count = (out.size() - r + phases - 1) / phases;
        if (phase_[r].copies) {
            const double* const from =
                padded_.data() + half_ + first_sample(static_cast<std::int64_t>(r));
            for (std::size_t m = 0; m < count; ++m) {
                out[r + m * phases] = static_cast<float>(from[m * step]);
            }
            continue;
        }
        double* into = sums_.data();
        for (const Part& part : phase_[r].parts) {
            run.correlate(part.weights.data(), part.weights.size(),
                          streams_.data() + part.stream * stream_length_ + part.first,
                          stream_length_ - part.first, into, count);
            if (into == part_.data()) {
                for (std::size_t m = 0; m < count; ++m) sums_[m] += part_[m];
            }
            into = part_.data();
        }
        for (std::size_t m = 0; m < count; ++m) {
            out[r + m * phases] = static_cast<float>(scales_[r + m * phases] * sums_[m]);
        }
    }
}

void Resampler::resample(std::span<const float> in, std::span<float> out) {
    std::ranges::copy(in, padded_.begin() + static_cast<std::ptrdiff_t>(half_));
    if (!phase_.empty()) return resample_by_phases(out);
    for (std::int64_t k = 0; k < outputs(); ++k) {
        const auto at = static_cast<std::size_t>(k);
        out[at] = static_cast<float>(scales_[at] * value(k));
    }
}

}  // namespace halvern::numerics
