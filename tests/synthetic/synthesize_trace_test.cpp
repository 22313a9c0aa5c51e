#include "synthetic/synthesize_trace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace halvern::synthetic {
namespace {

std::vector<float> trace_of(const SyntheticLine& line, int shot, int channel) {
    std::vector<float> trace(static_cast<std::size_t>(line.samples));
    TraceMaker(line).make(shot, channel, trace);
    return trace;
}

/// A line whose traces hold reflections, and the first breaks, which are over by then.
SyntheticLine reflections_only() {
    return {.statics_ms = 0, .noise = 0, .ground_roll = 0, .dead_part = 0, .reversed_part = 0};
}

// Ricker's formula with the library's functions. A wavelet may be off by half of 1/64 sample, over
// which its slope, at most 2.6 x peak frequency a second, changes it by 0.0013. How well source and
// receiver are coupled to the ground is unknown here and fitted.
TEST(TraceMaker, DrawsRickersWaveletsWhereReflectionsArrive) {
    SyntheticLine line = reflections_only();
    line.reflections = {{1100, 2500, 1}, {1900, 3000, -0.5}};
    for (const int channel : {30, 60, 89}) {
        const std::vector<float> trace = trace_of(line, 5, channel);
        const double first = line.reflection_ms(0, 5, channel);
        const double second = line.reflection_ms(1, 5, channel);
        const auto ricker = [&](double ms) {
            const double a = std::pow(3.14159265358979 * line.wavelet_hz * ms / 1000, 2);
            return (1 - 2 * a) * std::exp(-a);
        };
        const auto expected = [&](std::size_t i) {
            const double ms = 2.0 * static_cast<double>(i);
            return ricker(ms - first) - 0.5 * std::pow(first / second, 1.5) * ricker(ms - second);
        };
        double product = 0, square = 0;
        for (std::size_t i = 500; i < trace.size(); ++i) {
            product += trace[i] * expected(i);
            square += expected(i) * expected(i);
        }
        const double coupling = product / square;
        EXPECT_GT(coupling, 0);
        for (std::size_t i = 500; i < trace.size(); ++i) {
            EXPECT_NEAR(trace[i] / coupling, expected(i), 0.002) << "sample " << i;
        }
    }
}

TEST(TraceMaker, NoiseHasTheLevelAndTheBandAskedFor) {
    SyntheticLine line = reflections_only();
    line.reflections.clear();
    line.noise = 0.5;
    line.samples = 20000;
    const std::vector<float> trace = trace_of(line, 0, 0);
    double energy = 0, differences = 0;
    for (std::size_t i = 5000; i < trace.size(); ++i) {
        energy += trace[i] * trace[i];
        differences += std::pow(trace[i] - trace[i - 1], 2);
    }
    EXPECT_NEAR(std::sqrt(energy / 15000), 0.5, 0.05);
    // An even band from 6 to 70 Hz: the mean of 2 - 2 cos(2 pi f 0.002) over it.
    EXPECT_NEAR(differences / energy, 0.277, 0.06);
}

TEST(TraceMaker, TracesDependOnTheirPlaceAndTheSeedAlone) {
    const SyntheticLine line;
    const TraceMaker maker(line);
    std::vector<float> first(1500), again(1500), other(1500);
    maker.make(4, 7, first);
    maker.make(30, 100, other);
    maker.make(4, 7, again);
    EXPECT_EQ(first, again);
    EXPECT_NE(first, other);
    SyntheticLine seeded = line;
    seeded.seed = 2;
    EXPECT_NE(first, trace_of(seeded, 4, 7));
}

TEST(TraceMaker, DeadTracesAreZeroAndReversedStationsAreNegative) {
    SyntheticLine line{.reversed_part = 0};
    const std::vector<float> right = trace_of(line, 3, 3);
    line.noise = 0;
    const std::vector<float> clean = trace_of(line, 3, 3);
    line.reversed_part = 1;
    std::vector<float> wrong = trace_of(line, 3, 3);
    for (float& sample : wrong) sample = -sample;
    EXPECT_EQ(clean, wrong);
    EXPECT_NE(clean, right);
    line.dead_part = 1;
    EXPECT_EQ(trace_of(line, 3, 3), std::vector<float>(1500, 0.0f));
}

// Wavelets and trains that begin before or end after a trace of any length stay inside it.
TEST(TraceMaker, ShortTracesHoldWhatFits) {
    for (const int samples : {1, 2, 17, 300}) {
        for (const int interval : {1, 125, 2000, 65535}) {
            SyntheticLine line{.shots = 2,
                               .channels = 6,
                               .samples = samples,
                               .interval_us = interval,
                               .spacing_m = 1000};
            line.wavelet_hz = interval > 10000 ? 2 : interval < 100 ? 600 : 30;
            ASSERT_FALSE(line.fault()) << line.fault().reason();
            const TraceMaker maker(line);
            std::vector<float> trace(static_cast<std::size_t>(samples));
            for (int channel = 0; channel < 6; ++channel) {
                maker.make(1, channel, trace);
                for (const float sample : trace) EXPECT_TRUE(std::isfinite(sample));
            }
        }
    }
}

}  // namespace
}  // namespace halvern::synthetic
