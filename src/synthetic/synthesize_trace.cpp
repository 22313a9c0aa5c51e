#include "synthetic/synthesize_trace.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "synthetic/synthesize_math.h"

namespace halvern::synthetic {

/// Ground roll comes in trains that start with their low frequencies, which are the fast ones.
struct Train {
    double fast, slow;         // group velocities, m/s
    double first_hz, last_hz;  // frequencies at the start and the end
    double amplitude;
};

namespace {

constexpr int kPhases = 64;                     // of a wavelet within a sample
constexpr std::size_t kNoisePeriod = 1u << 15;  // samples
constexpr double kLowNoiseHz = 6, kHighNoiseHz = 70;

constexpr Train kGroundRoll = {700, 350, 6, 14, 1};
constexpr Train kFasterRoll = {1100, 750, 8, 16, 0.3};
constexpr double kRollRise = 0.15;  // s, at both ends of a train
constexpr double kRollDelay = 3;    // near-surface delays of a train against those of reflections

/// Random numbers of the noise, apart from those of the line.
enum Question : std::uint64_t { kNoise = 100, kFirstStart, kSecondStart, kShotGain, kStationGain };
std::uint64_t about(Question question, int number) {
    return static_cast<std::uint64_t>(question) << 32 | static_cast<std::uint32_t>(number);
}

/// 0.8 … 1.25: how well a source or receiver is coupled to the ground.
double gain(std::uint64_t seed, Question question, int number) {
    const double unit = draw_unit(seed, about(question, number));
    return 0.8 + 0.45 * unit;
}

/// Ricker's wavelet, 1 at its middle.
double ricker(double peak_hz, double seconds) {
    const double argument = kPi * peak_hz * seconds * kPi * peak_hz * seconds;
    return (1 - 2 * argument) * decay(argument);
}

/// A period of random numbers with the band kLowNoiseHz … kHighNoiseHz and the given root mean
/// square, twice in a row.
std::vector<float> band_limited_noise(std::uint64_t seed, double interval_s, double rms) {
    const double high_hz = std::min(kHighNoiseHz, 0.4 / interval_s);
    const double low_hz = std::min(kLowNoiseHz, high_hz / 4);
    const int reach = std::clamp(static_cast<int>(0.12 / interval_s), 8, 300);
    std::vector<double> filter(static_cast<std::size_t>(reach) +
                               1);  // symmetric: from the middle on
    for (int k = 0; k <= reach; ++k) {
        const double t = k * interval_s;
        const double window = 0.5 + 0.5 * cosine(kPi * k / (reach + 1));
        const double band =
            k == 0 ? 2 * (high_hz - low_hz)
                   : (sine(2 * kPi * high_hz * t) - sine(2 * kPi * low_hz * t)) / (kPi * t);
        filter[static_cast<std::size_t>(k)] = window * band;
    }
    // The sum of four even draws is bell-shaped enough.
    std::vector<double> white(kNoisePeriod);
    for (std::size_t i = 0; i < kNoisePeriod; ++i) {
        for (int k = 0; k < 4; ++k) white[i] += draw_unit(seed, about(kNoise, k), i) - 0.5;
    }
    const auto at = [&](std::size_t i) { return white[i & (kNoisePeriod - 1)]; };
    std::vector<double> noise(kNoisePeriod);
    double energy = 0;
    for (std::size_t i = 0; i < kNoisePeriod; ++i) {
        noise[i] = filter[0] * white[i];
        for (std::size_t k = 1; k < filter.size(); ++k)
            noise[i] += filter[k] * (at(i - k) + at(i + k));
        energy += noise[i] * noise[i];
    }
    const double scale = rms / std::sqrt(energy / kNoisePeriod);
    std::vector<float> twice(2 * kNoisePeriod);
    for (std::size_t i = 0; i < twice.size(); ++i) {
        twice[i] = static_cast<float>(noise[i & (kNoisePeriod - 1)] * scale);
    }
    return twice;
}

}  // namespace

TraceMaker::TraceMaker(const SyntheticLine& line) : line_(line) {
    const double interval_s = line.interval_us * 1e-6;
    // 1.3 periods of the peak frequency from its middle, the wavelet is below 1e-5.
    reach_ = static_cast<int>(std::ceil(1.3 / line.wavelet_hz / interval_s));
    for (int phase = 0; phase <= kPhases; ++phase) {
        for (int k = -reach_; k <= reach_ + 1; ++k) {
            const double seconds = (k - static_cast<double>(phase) / kPhases) * interval_s;
            wavelets_.push_back(static_cast<float>(ricker(line.wavelet_hz, seconds)));
        }
    }
    // Every trace takes the noise from two places, so that no two traces have the same.
    if (line.noise > 0) {
        noise_ = band_limited_noise(line.seed, interval_s, line.noise / std::sqrt(2.0));
    }
    const int rise = std::max(1, static_cast<int>(kRollRise / interval_s));
    for (int k = 0; k < rise; ++k) {
        const double root = sine(kPi / 2 * (k + 0.5) / rise);
        taper_.push_back(static_cast<float>(root * root));
    }
}

void TraceMaker::make(int shot, int channel, std::span<float> trace) const {
    std::fill(trace.begin(), trace.end(), 0.0f);
    if (line_.dead(shot, channel)) return;
    const int station = line_.receiver_station(shot, channel);
    const int offset = line_.offset(shot, channel);
    const double coupling = gain(line_.seed, kShotGain, shot) *
                            gain(line_.seed, kStationGain, station) *
                            (line_.reversed(station) ? -1 : 1);
    if (!noise_.empty()) add_noise(shot, channel, trace);
    for (std::size_t i = 0; i < line_.reflections.size(); ++i) {
        const double time = line_.reflection_ms(static_cast<int>(i), shot, channel);
        const double nearness = 400 / std::max(time, 50.0);
        const double spreading = nearness * std::sqrt(nearness);
        add_wavelet(time, coupling * line_.reflections[i].amplitude * spreading, trace);
    }
    if (offset >= line_.critical_distance()) {
        add_wavelet(line_.refraction_ms(shot, channel), coupling * 1.2 * 150 / (offset + 150),
                    trace);
    }
    const double near = 60.0 / (offset + 60);
    add_wavelet(line_.direct_ms(offset), coupling * 4 * near * near, trace);

    const double roll = coupling * line_.ground_roll * std::sqrt(near);
    const int delay_ms = line_.source_delay_ms(shot) + line_.receiver_delay_ms(station);
    const double roll_start_s = kRollDelay * (delay_ms + 2 * line_.statics_ms) / 1000;
    for (const Train& train : {kGroundRoll, kFasterRoll}) {
        add_train(train, offset, roll_start_s, roll * train.amplitude, trace);
    }
}

void TraceMaker::add_noise(int shot, int channel, std::span<float> trace) const {
    const auto start = [&](Question question) {
        return draw(line_.seed, about(question, shot), static_cast<std::uint64_t>(channel)) &
               (kNoisePeriod - 1);
    };
    const float* first = noise_.data() + start(kFirstStart);
    const float* second = noise_.data() + start(kSecondStart);
    for (std::size_t done = 0; done < trace.size(); done += kNoisePeriod) {
        const std::size_t count = std::min(kNoisePeriod, trace.size() - done);
        float* out = trace.data() + done;
        for (std::size_t i = 0; i < count; ++i) out[i] += first[i] + second[i];
    }
}

void TraceMaker::add_wavelet(double time_ms, double amplitude, std::span<float> trace) const {
    const double position = time_ms * 1000 / line_.interval_us;  // in samples
    if (!(position > -reach_ - 2.0 && position < static_cast<double>(trace.size()) + reach_))
        return;
    const double whole = std::floor(position);
    const int phase = static_cast<int>(std::floor((position - whole) * kPhases + 0.5));
    const int length = 2 * reach_ + 2;
    const int start = static_cast<int>(whole) - reach_;  // sample of the wavelet's first value
    const int first = std::max(0, -start);
    const int last = std::min(length, static_cast<int>(trace.size()) - start);
    const float* wavelet = wavelets_.data() + std::ptrdiff_t{phase} * length;
    float* out = trace.data() + start;
    const auto factor = static_cast<float>(amplitude);
    for (int k = first; k < last; ++k) out[k] += factor * wavelet[k];
}

void TraceMaker::add_train(const Train& train, int offset_m, double delay_s, double amplitude,
                           std::span<float> trace) const {
    if (amplitude == 0) return;
    const double interval_s = line_.interval_us * 1e-6;
    const double begin_s = delay_s + offset_m / train.fast;
    const double length_s = 2 * kRollRise + offset_m / train.slow - offset_m / train.fast;
    const auto samples = static_cast<std::int64_t>(trace.size());
    const auto first = static_cast<std::int64_t>(std::ceil(begin_s / interval_s));
    const auto length = static_cast<std::int64_t>(length_s / interval_s);
    const std::int64_t last = std::min(samples, first + length);
    if (first >= last) return;

    // The frequency rises evenly, so the phase is quadratic: its rotation from sample to sample is
    // itself rotated by a constant.
    const double sweep = (train.last_hz - train.first_hz) / length_s;
    const double start_s = static_cast<double>(first) * interval_s - begin_s;
    const double phase = 2 * kPi * (train.first_hz + sweep * start_s / 2) * start_s;
    const double step =
        2 * kPi * interval_s * (train.first_hz + sweep * start_s + sweep * interval_s / 2);
    const double bend = 2 * kPi * sweep * interval_s * interval_s;
    // A longer train carries the same energy.
    const double peak = amplitude * std::sqrt(2 * kRollRise / length_s);
    double re = peak * cosine(phase), im = peak * sine(phase);
    double step_re = cosine(step), step_im = sine(step);
    const double bend_re = cosine(bend), bend_im = sine(bend);
    const auto rise = static_cast<std::int64_t>(taper_.size());
    for (std::int64_t n = first; n < last; ++n) {
        const std::int64_t in = n - first;
        const std::int64_t left = first + length - 1 - n;
        float value = static_cast<float>(im);
        if (in < rise) value *= taper_[static_cast<std::size_t>(in)];
        if (left < rise) value *= taper_[static_cast<std::size_t>(left)];
        trace[static_cast<std::size_t>(n)] += value;
        const double next = re * step_re - im * step_im;
        im = re * step_im + im * step_re;
        re = next;
        const double next_step = step_re * bend_re - step_im * bend_im;
        step_im = step_re * bend_im + step_im * bend_re;
        step_re = next_step;
    }
}

}  // namespace halvern::synthetic
