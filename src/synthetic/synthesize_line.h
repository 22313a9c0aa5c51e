#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/fault.h"

namespace halvern::synthetic {

enum class Spread { kSplit, kEndOn };

/// A flat or evenly dipping interface.
struct Reflection {
    double t0_ms;      ///< two-way time at offset 0 in the middle of the line
    double velocity;   ///< of its hyperbola, m/s
    double amplitude;  ///< of the wavelet at 400 ms; it falls with the time to the power 1.5
};

/// The reflections that a line has unless others are asked for.
std::vector<Reflection> default_reflections();
/// Reflections at these times with the amplitudes of the default ones in turn.
std::vector<Reflection> reflections_at(const std::vector<double>& t0_ms);

/// A straight 2-D line from west to east and everything that can be known of it: where sources
/// and receivers are, when every event arrives, which traces are bad. Shots, channels, stations and
/// reflections are counted from 0 here; numbers as headers have them begin at first_….
/// Distances are whole metres, so that header words and SPS columns hold them exactly.
struct SyntheticLine {
    // The survey.
    int shots = 40;
    int channels = 120;
    int samples = 1500;
    int interval_us = 2000;
    int spacing_m = 20;     ///< between receiver stations
    int shot_stations = 2;  ///< stations between shots: the spread moves on by as many
    int gap = 0;            ///< stations left free between a source and the nearest receivers
    Spread spread = Spread::kSplit;
    int first_ffid = 1;
    int first_station = 1001;  ///< number of the westernmost station
    int line_number = 101;     ///< of source and receiver points
    /// At sea: a vessel sails east, its streamer behind it with channel 1 at the far end. There is
    /// no surface, and every shot has receivers of its own.
    bool marine = false;
    int coordinate_scalar = 1;  ///< COORSCAL of the headers, which hold coordinates divided by it

    // The earth. Reflections get the velocity velocity_ms + velocity_gradient x t0 in seconds.
    std::vector<Reflection> reflections = default_reflections();
    double velocity_ms = 1900;         ///< at time 0
    double velocity_gradient = 450;    ///< m/s more every second
    double dip_ms_per_km = 0;          ///< zero-offset time gained toward the east
    double direct_velocity = 900;      ///< of the weathered layer, m/s
    double refractor_velocity = 2300;  ///< below it
    double weathering_m = 15;          ///< its thickness
    int relief_m = 40;                 ///< of the surface, up and down, on land
    double statics_ms = 4;             ///< largest delay below a point, rounded to whole ms

    // The record.
    double wavelet_hz = 30;        ///< peak frequency
    double noise = 0.02;           ///< root mean square; reflections have 1 at 400 ms
    double ground_roll = 8;        ///< largest amplitude near the source
    double dead_part = 0.004;      ///< of all traces
    double reversed_part = 0.012;  ///< of all stations
    std::uint64_t seed = 1;

    /// What is wrong with the numbers above, in the user's words; nothing when a line can be made.
    Fault fault() const;
    /// Gives every reflection the velocity of the function above. Once, after setting either.
    void apply_velocity_function();

    // Where things are.
    std::int64_t traces() const { return std::int64_t{shots} * channels; }
    int stations() const;
    int source_station(int shot) const;  ///< the source is half a spacing east of it
    int receiver_station(int shot, int channel) const;
    int station_x(int station) const;
    int source_x(int shot) const;
    int line_y() const;
    int offset(int shot, int channel) const;  ///< never negative
    double midpoint_x(int shot, int channel) const;
    /// CDP numbers begin at 1 in the west and are half a spacing apart.
    int cdp(int shot, int channel) const;
    int cdps() const;
    double cdp_x(int cdp) const;          ///< of its midpoints
    int fold(int cdp) const;              ///< traces with that CDP, dead ones counted
    int elevation(int x) const;           ///< of the surface, m
    int receiver_elevation(int x) const;  ///< below 0 at sea
    int water_depth(int x) const;         ///< 0 on land
    int source_depth(int shot) const;
    int uphole_ms(int shot) const;
    /// A length as a header holds it beside coordinate_scalar.
    double scaled(double metres) const {
        return coordinate_scalar > 0 ? metres / coordinate_scalar : -metres * coordinate_scalar;
    }
    int channels_left() const;  ///< west of the source
    /// Seconds since midnight of the first day, and that day of the year.
    std::int64_t shot_second(int shot) const;
    int first_day() const { return 173; }

    // What a trace suffers. Delays are positive; the statics in the headers are their negatives.
    int source_delay_ms(int shot) const;
    int receiver_delay_ms(int station) const;
    bool dead(int shot, int channel) const;
    bool reversed(int station) const;

    // When events arrive: the middle of their wavelets, in ms. Near-surface delays are in
    // reflections and refractions, whose paths cross the weathered layer twice.
    double zero_offset_ms(int reflection, double x) const;
    double reflection_ms(int reflection, int shot, int channel) const;
    double refraction_ms(int shot, int channel) const;
    double direct_ms(int offset_m) const;
    double intercept_ms() const;       ///< of the refraction
    double critical_distance() const;  ///< from which on it exists, m

    /// The model in words and numbers, for a person and for a test: one line a fact.
    std::string description() const;
};

}  // namespace halvern::synthetic
