#pragma once

#include <cstdint>
#include <initializer_list>

// What a synthetic line is drawn from. The library's random distributions and its sine differ from
// system to system in their last bits or more; these give the same bits wherever double is IEEE.

namespace halvern::synthetic {

/// A 64-bit hash of a seed and up to two numbers: the next state of splitmix64, mixed.
constexpr std::uint64_t draw(std::uint64_t seed, std::uint64_t a, std::uint64_t b = 0) {
    std::uint64_t value = seed;
    for (const std::uint64_t part : {a, b}) {
        value += part * 0xD1B54A32D192ED03u + 0x9E3779B97F4A7C15u;
        value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9u;
        value = (value ^ value >> 27) * 0x94D049BB133111EBu;
        value ^= value >> 31;
    }
    return value;
}

/// The same as a number from 0 up to but not including 1.
constexpr double draw_unit(std::uint64_t seed, std::uint64_t a, std::uint64_t b = 0) {
    return static_cast<double>(draw(seed, a, b) >> 11) * 0x1p-53;
}

inline constexpr double kPi = 3.14159265358979323846;

/// Sine and cosine, to about 1e-11; exp(-x) for x >= 0, to about 1e-12 of its value.
double sine(double radians);
inline double cosine(double radians) { return sine(radians + kPi / 2); }
double decay(double x);

}  // namespace halvern::synthetic
