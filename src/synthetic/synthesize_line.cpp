#include "synthetic/synthesize_line.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>

#include "foundation/messages.h"
#include "synthetic/synthesize_math.h"

namespace halvern::synthetic {

namespace {

// What draw() is asked about, so that no two answers depend on each other.
enum Question : std::uint64_t { kDead = 1, kReversed, kSourceStatic, kReceiverStatic, kDepth };
std::uint64_t about(Question question, int number) {
    return static_cast<std::uint64_t>(question) << 32 | static_cast<std::uint32_t>(number);
}

constexpr int kWestEnd = 610000;
constexpr int kNorthing = 5720000;
constexpr int kSecondsPerShot = 20;
constexpr int kGunDepth = 6;  // at sea, m, and below
constexpr int kCableDepth = 8;
constexpr int kFirstShotSecond = 7 * 3600;  // of the first day

/// The shape of the surface, -1 … 1.
double relief(int x) {
    const double east = x - kWestEnd;
    return 0.6 * sine(2 * kPi * east / 3100) + 0.4 * sine(2 * kPi * east / 830 + 1);
}

int round_to_int(double value) { return static_cast<int>(std::floor(value + 0.5)); }

HALVERN_PRINTF(2, 3) void append(std::string& text, const char* format, ...) {
    char line[512];
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    if (length > 0) text.append(line, std::min<std::size_t>(length, sizeof line - 1));
}

}  // namespace

std::vector<Reflection> default_reflections() {
    return reflections_at({400, 620, 850, 1120, 1400, 1750, 2150, 2600});
}

std::vector<Reflection> reflections_at(const std::vector<double>& t0_ms) {
    constexpr double kAmplitudes[] = {1, -0.6, 0.8, -0.7, 0.9, -0.8, 0.9, -1};
    std::vector<Reflection> reflections;
    for (std::size_t i = 0; i < t0_ms.size(); ++i) {
        reflections.push_back({t0_ms[i], 0, kAmplitudes[i % std::size(kAmplitudes)]});
    }
    SyntheticLine defaults{.reflections = std::move(reflections)};
    defaults.apply_velocity_function();
    return defaults.reflections;
}

void SyntheticLine::apply_velocity_function() {
    for (Reflection& reflection : reflections) {
        reflection.velocity = velocity_ms + velocity_gradient * reflection.t0_ms / 1000;
    }
}

Fault SyntheticLine::fault() const {
    const auto within = [](double value, double least, double most) {
        return value >= least && value <= most;  // false for NaN
    };
    if (shots < 1 || channels < 1) return Fault("a line needs at least one shot and one channel");
    if (traces() > std::numeric_limits<int>::max()) {
        return Fault("shots times channels must not exceed 2147483647");
    }
    if (!within(samples, 1, 32767)) return Fault("the samples of a trace must be 1 to 32767");
    if (!within(interval_us, 1, 65535))
        return Fault("the sample interval must be 0.001 to 65.535 ms");
    if (!within(spacing_m, 1, 1000)) return Fault("the spacing must be 1 to 1000 m");
    if (!within(shot_stations, 1, 1000)) return Fault("shots must be 1 to 1000 stations apart");
    if (!within(gap, 0, 1000)) return Fault("the gap must be 0 to 1000 stations");
    const std::int64_t length =
        std::int64_t{channels} + 2 * gap + std::int64_t{shot_stations} * shots;
    if (length * spacing_m > 9000000) return Fault("the line is longer than 9000 km");
    if (!within(relief_m, 0, 10000)) return Fault("the relief must be 0 to 10000 m");
    if (coordinate_scalar == 0 || !within(coordinate_scalar, -32767, 32767)) {
        return Fault("the coordinate scalar must be -32767 to 32767 and not 0");
    }
    const auto east = static_cast<double>(kWestEnd + length * spacing_m);
    const double farthest = scaled(std::max<double>(kNorthing, east));
    if (farthest > std::numeric_limits<int>::max()) {
        return Fault("the coordinates do not fit 32 bits with that scalar");
    }
    if (!within(first_ffid, 0, std::numeric_limits<int>::max() - shots)) {
        return Fault("the first file number must not be negative");
    }
    if (!within(wavelet_hz, 1, 500000.0 / interval_us)) {
        return Fault(
            "the wavelet's frequency must be between 1 Hz and half the sampling frequency");
    }
    if (1e6 / wavelet_hz > 2000.0 * interval_us) {
        return Fault("a period of the wavelet must not have more than 2000 samples");
    }
    if (!within(statics_ms, 0, 100)) return Fault("the statics must be 0 to 100 ms");
    if (!within(dip_ms_per_km, -1000, 1000)) return Fault("the dip must be -1000 to 1000 ms/km");
    if (!within(noise, 0, 1e6)) return Fault("the noise must be 0 to 1000000");
    if (!within(ground_roll, 0, 1e6)) return Fault("the ground roll must be 0 to 1000000");
    if (!within(dead_part, 0, 1)) return Fault("the dead traces must be 0 to 100 percent");
    if (!within(reversed_part, 0, 1))
        return Fault("the reversed stations must be 0 to 100 percent");
    for (const Reflection& reflection : reflections) {
        if (!within(reflection.t0_ms, 0, 1e6))
            return Fault("reflection times must be 0 to 1000000 ms");
        if (!within(reflection.velocity, 1, 1e6)) {
            return Fault("every reflection's velocity must be 1 to 1000000 m/s");
        }
    }
    return {};
}

int SyntheticLine::channels_left() const {
    if (marine) return channels;
    return spread == Spread::kSplit ? channels / 2 : 0;
}

int SyntheticLine::source_station(int shot) const {
    const int left = channels_left();
    return (left > 0 ? left - 1 + gap : 0) + shot * shot_stations;
}

int SyntheticLine::receiver_station(int shot, int channel) const {
    const int left = channels_left();
    const int first = channel < left ? 1 - left - gap : 1 - left + gap;
    return source_station(shot) + first + channel;
}

int SyntheticLine::stations() const {
    return std::max(receiver_station(shots - 1, channels - 1), source_station(shots - 1) + 1) + 1;
}

int SyntheticLine::station_x(int station) const { return kWestEnd + station * spacing_m; }
int SyntheticLine::source_x(int shot) const {
    return station_x(source_station(shot)) + spacing_m / 2;
}
int SyntheticLine::line_y() const { return kNorthing; }

int SyntheticLine::offset(int shot, int channel) const {
    return std::abs(station_x(receiver_station(shot, channel)) - source_x(shot));
}

double SyntheticLine::midpoint_x(int shot, int channel) const {
    return (station_x(receiver_station(shot, channel)) + source_x(shot)) / 2.0;
}

int SyntheticLine::cdp(int shot, int channel) const {
    // The westernmost midpoint belongs to the first shot and the first channel.
    return source_station(shot) + receiver_station(shot, channel) - source_station(0) -
           receiver_station(0, 0) + 1;
}

int SyntheticLine::cdps() const { return cdp(shots - 1, channels - 1); }

double SyntheticLine::cdp_x(int number) const {
    return midpoint_x(0, 0) + (number - 1) * (spacing_m / 2.0);
}

int SyntheticLine::fold(int number) const {
    // A shot later, the same channel lies 2 x shot_stations CDPs further east: of every run of
    // channels without a hole, count the shots that put one of them on this CDP.
    const auto shots_of = [&](int first_channel, int last_channel) {
        if (first_channel > last_channel) return 0;
        const int step = 2 * shot_stations;
        const int west = cdp(0, first_channel);  // of shot 0
        const int east = cdp(0, last_channel);
        const int last_shot = std::min(shots - 1, (number - west) / step);
        const int first_shot = number > east ? (number - east + step - 1) / step : 0;
        return number < west ? 0 : std::max(0, last_shot - first_shot + 1);
    };
    const int left = channels_left();
    return shots_of(0, left - 1) + shots_of(left, channels - 1);
}

int SyntheticLine::elevation(int x) const {
    return marine ? 0 : round_to_int(280 + relief_m * relief(x));
}
int SyntheticLine::receiver_elevation(int x) const { return marine ? -kCableDepth : elevation(x); }
int SyntheticLine::water_depth(int x) const {
    return marine ? round_to_int(300 + 40 * relief(x)) : 0;
}

int SyntheticLine::source_depth(int shot) const {
    if (marine) return kGunDepth;
    return 8 + static_cast<int>(draw(seed, about(kDepth, shot)) % 8);
}

int SyntheticLine::uphole_ms(int shot) const {
    if (marine) return 0;
    return round_to_int(source_depth(shot) * 1000 / direct_velocity);
}

std::int64_t SyntheticLine::shot_second(int shot) const {
    return kFirstShotSecond + std::int64_t{shot} * kSecondsPerShot;
}

int SyntheticLine::source_delay_ms(int shot) const {
    const double own = 2 * draw_unit(seed, about(kSourceStatic, shot)) - 1;
    return round_to_int(statics_ms * (0.6 * relief(source_x(shot)) + 0.4 * own));
}

int SyntheticLine::receiver_delay_ms(int station) const {
    const double own = 2 * draw_unit(seed, about(kReceiverStatic, station)) - 1;
    return round_to_int(statics_ms * (0.6 * relief(station_x(station)) + 0.4 * own));
}

bool SyntheticLine::dead(int shot, int channel) const {
    return draw_unit(seed, about(kDead, shot), static_cast<std::uint64_t>(channel)) < dead_part;
}

bool SyntheticLine::reversed(int station) const {
    return draw_unit(seed, about(kReversed, station)) < reversed_part;
}

double SyntheticLine::zero_offset_ms(int reflection, double x) const {
    const double middle = (cdp_x(1) + cdp_x(cdps())) / 2;
    return reflections[static_cast<std::size_t>(reflection)].t0_ms +
           dip_ms_per_km * (x - middle) / 1000;
}

double SyntheticLine::reflection_ms(int reflection, int shot, int channel) const {
    const double t0 = zero_offset_ms(reflection, midpoint_x(shot, channel));
    const double moveout =
        1000.0 * offset(shot, channel) / reflections[static_cast<std::size_t>(reflection)].velocity;
    return std::sqrt(t0 * t0 + moveout * moveout) + source_delay_ms(shot) +
           receiver_delay_ms(receiver_station(shot, channel));
}

double SyntheticLine::intercept_ms() const {
    const double ratio = direct_velocity / refractor_velocity;
    return 2000 * weathering_m * std::sqrt(1 - ratio * ratio) / direct_velocity;
}

double SyntheticLine::critical_distance() const {
    const double ratio = direct_velocity / refractor_velocity;
    return 2 * weathering_m * ratio / std::sqrt(1 - ratio * ratio);
}

double SyntheticLine::refraction_ms(int shot, int channel) const {
    return intercept_ms() + 1000.0 * offset(shot, channel) / refractor_velocity +
           source_delay_ms(shot) + receiver_delay_ms(receiver_station(shot, channel));
}

double SyntheticLine::direct_ms(int offset_m) const { return 1000.0 * offset_m / direct_velocity; }

std::string SyntheticLine::description() const {
    std::string text;
    append(text, "shots %d, channels %d, traces %lld\n", shots, channels,
           static_cast<long long>(traces()));
    append(text, "samples %d at %g ms\n", samples, interval_us / 1000.0);
    append(text, "stations %d to %d every %d m\n", first_station, first_station + stations() - 1,
           spacing_m);
    append(text, "shots every %d m, %s spread, gap of %d stations\n", shot_stations * spacing_m,
           marine                     ? "towed"
           : spread == Spread::kSplit ? "split"
                                      : "end-on",
           gap);
    int nearest = offset(0, 0);
    int farthest = 0;
    for (const int channel : {0, channels_left() - 1, channels_left(), channels - 1}) {
        if (channel < 0 || channel >= channels) continue;
        nearest = std::min(nearest, offset(0, channel));
        farthest = std::max(farthest, offset(0, channel));
    }
    int largest_fold = 0;  // the fold repeats from shot to shot
    for (int i = 0; i < 2 * shot_stations; ++i) {
        largest_fold = std::max(largest_fold, fold(cdps() / 2 + i));
    }
    append(text, "offsets %d to %d m\n", nearest, farthest);
    append(text, "CDPs 1 to %d every %g m from x %.1f, largest fold %d\n", cdps(), spacing_m / 2.0,
           cdp_x(1), largest_fold);
    for (const Reflection& reflection : reflections) {
        append(text, "reflection t0 %g ms, velocity %g m/s, amplitude %g\n", reflection.t0_ms,
               reflection.velocity, reflection.amplitude);
    }
    append(text, "dip %g ms/km, statics up to %g ms, wavelet %g Hz\n", dip_ms_per_km, statics_ms,
           wavelet_hz);
    append(text, "refraction %.3f ms + offset / %g m/s from %.1f m on\n", intercept_ms(),
           refractor_velocity, critical_distance());
    append(text, "direct wave %g m/s\n", direct_velocity);
    append(text, "noise %g, ground roll %g, seed %llu\n", noise, ground_roll,
           static_cast<unsigned long long>(seed));
    return text;
}

}  // namespace halvern::synthetic
