#include "synthetic/synthesize_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "synthetic/synthesize_math.h"

namespace halvern::synthetic {
namespace {

TEST(SyntheticMath, AgreesWithTheLibrary) {
    for (double x = -50; x < 50; x += 0.0137) {
        EXPECT_NEAR(sine(x), std::sin(x), 1e-10) << x;
        EXPECT_NEAR(cosine(x), std::cos(x), 1e-10) << x;
    }
    for (double x = 0; x < 600; x = x * 1.1 + 0.01) {
        EXPECT_NEAR(decay(x) / std::exp(-x), 1, 1e-11) << x;
    }
}

// Worked on paper: stations and sources as metres from the west end.
TEST(SyntheticGeometry, ASpreadMovesAlongTheLine) {
    struct Case {
        const char* name;
        SyntheticLine line;
        int shot;
        std::vector<int> stations;  // of the channels
        int source;                 // m
        std::vector<int> offsets;   // m
        std::vector<int> cdps;
    };
    SyntheticLine split{.shots = 3, .channels = 4, .spacing_m = 20, .shot_stations = 2};
    SyntheticLine gapped = split;
    gapped.gap = 1;
    SyntheticLine uneven{.shots = 3, .channels = 5, .spacing_m = 25, .shot_stations = 1};
    SyntheticLine end_on{.shots = 3,
                         .channels = 3,
                         .spacing_m = 10,
                         .shot_stations = 3,
                         .gap = 2,
                         .spread = Spread::kEndOn};
    const Case kCases[] = {
        {"split", split, 0, {0, 1, 2, 3}, 30, {30, 10, 10, 30}, {1, 2, 3, 4}},
        {"split, third shot", split, 2, {4, 5, 6, 7}, 110, {30, 10, 10, 30}, {9, 10, 11, 12}},
        {"a station free on both sides",
         gapped,
         0,
         {0, 1, 4, 5},
         50,
         {50, 30, 30, 50},
         {1, 2, 5, 6}},
        {"odd spacing, more ahead",
         uneven,
         1,
         {1, 2, 3, 4, 5},
         62,
         {37, 12, 13, 38, 63},
         {3, 4, 5, 6, 7}},
        {"end-on", end_on, 1, {6, 7, 8}, 35, {25, 35, 45}, {7, 8, 9}}};
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.name);
        ASSERT_FALSE(c.line.fault());
        const int west = c.line.station_x(0);
        EXPECT_EQ(c.line.source_x(c.shot) - west, c.source);
        for (std::size_t i = 0; i < c.stations.size(); ++i) {
            const int channel = static_cast<int>(i);
            EXPECT_EQ(c.line.receiver_station(c.shot, channel), c.stations[i]);
            EXPECT_EQ(c.line.offset(c.shot, channel), c.offsets[i]);
            EXPECT_EQ(c.line.cdp(c.shot, channel), c.cdps[i]);
            EXPECT_EQ(c.line.cdp_x(c.cdps[i]), c.line.midpoint_x(c.shot, channel));
        }
    }
    EXPECT_EQ(split.stations(), 8);
    EXPECT_EQ(end_on.stations(), 12);  // sources at 0, 3, 6; the last receiver is 6 + 3 + 2
}

TEST(SyntheticGeometry, FoldIsTheNumberOfTracesOfACdp) {
    for (const Spread spread : {Spread::kSplit, Spread::kEndOn}) {
        for (const int stations : {1, 2, 3}) {
            for (const int gap : {0, 1, 4}) {
                const SyntheticLine line{.shots = 11,
                                         .channels = 13,
                                         .shot_stations = stations,
                                         .gap = gap,
                                         .spread = spread};
                std::map<int, int> counted;
                for (int shot = 0; shot < line.shots; ++shot) {
                    for (int i = 0; i < line.channels; ++i) ++counted[line.cdp(shot, i)];
                }
                EXPECT_EQ(counted.rbegin()->first, line.cdps());
                for (int cdp = 0; cdp <= line.cdps() + 1; ++cdp) {
                    EXPECT_EQ(line.fold(cdp), counted[cdp]) << "CDP " << cdp << " gap " << gap;
                }
            }
        }
    }
}

// By hand: 2080 = 1900 + 450 x 0.4; at 1190 m the moveout is 1190 / 2080 s = 572.115 ms, and
// sqrt(400^2 + 572.115^2) = 698.081. The refraction: cos(asin(900 / 2300)) = 0.920260, so
// 2 x 15 m x 0.920260 / 900 m/s = 30.675 ms, and 1190 m / 2300 m/s = 517.391 ms.
TEST(SyntheticTimes, FollowTheirEquations) {
    SyntheticLine line{.statics_ms = 0};
    ASSERT_EQ(line.offset(0, 119), 1190);
    EXPECT_EQ(line.reflections[0].velocity, 2080);
    EXPECT_NEAR(line.reflection_ms(0, 0, 119), 698.081, 1e-3);
    EXPECT_NEAR(line.refraction_ms(0, 119), 30.675 + 517.391, 1e-3);
    EXPECT_NEAR(line.direct_ms(90), 100, 1e-9);

    line.dip_ms_per_km = 50;  // the middle of the line keeps its time
    const double middle = (line.cdp_x(1) + line.cdp_x(line.cdps())) / 2;
    EXPECT_NEAR(line.zero_offset_ms(0, middle), 400, 1e-9);
    EXPECT_NEAR(line.zero_offset_ms(0, middle + 500), 425, 1e-9);
}

TEST(SyntheticLineFault, RefusesWhatCannotBeMade) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(SyntheticLine{}.fault());
    const SyntheticLine kLines[] = {{.shots = 0},
                                    {.channels = -1},
                                    {.shots = 1 << 30, .channels = 1 << 30},
                                    {.samples = 0},
                                    {.samples = 40000},
                                    {.interval_us = 0},
                                    {.spacing_m = 0},
                                    {.shots = 100000, .spacing_m = 1000},
                                    {.gap = -1},
                                    {.reflections = {{nan, 2000, 1}}},
                                    {.reflections = {{400, 0, 1}}},
                                    {.statics_ms = nan},
                                    {.wavelet_hz = 0},
                                    {.wavelet_hz = 300},
                                    {.interval_us = 1, .wavelet_hz = 30},
                                    {.noise = -1},
                                    {.ground_roll = nan},
                                    {.dead_part = 1.5}};
    for (const SyntheticLine& line : kLines) {
        EXPECT_TRUE(line.fault()) << &line - kLines;
    }
}

}  // namespace
}  // namespace halvern::synthetic
