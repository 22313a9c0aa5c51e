#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "foundation/progress.h"
#include "foundation/report.h"
#include "geometry/line_reader.h"
#include "platform/fault.h"

namespace halvern {

/// A source, mid-point or bin centre. What its record leaves blank is NaN.
struct P1Position {
    std::array<char, 16> line_name{};  ///< filled with blanks
    int line = 0;                      ///< the first number in the name, 0 without one
    int point = 0;
    double latitude_s = 0;   ///< arc seconds, north positive
    double longitude_s = 0;  ///< east positive
    double easting = 0;      ///< in the file's grid unit, as the northing
    double northing = 0;
    float water_depth = 0;
    std::int16_t day = 0;         ///< of the year; 0 where blank
    std::int32_t second = 0;      ///< of the day
    std::uint32_t first_run = 0;  ///< its receiver groups, of a source: P1File's own
    std::uint32_t end_run = 0;
};

/// A receiver group. Coordinates are kept to a hundredth.
struct P1Group {
    std::int32_t easting_hundredths = 0;
    std::int32_t northing_hundredths = 0;
    float depth = 0;  ///< of the cable; NaN where blank

    double easting() const { return easting_hundredths / 100.0; }
    double northing() const { return northing_hundredths / 100.0; }
};

/// How a number leads to a receiver group of a source.
enum class P1Count {
    kNumber,   ///< it is the group's number
    kThrough,  ///< the groups of the streamers are counted through from 1, streamer after streamer
};

/// The positions of a P1/90 or P1/84 file: sources with their receiver groups, mid-points and bin
/// centres, each in the order of the file. A group takes 12 bytes.
class P1File {
public:
    /// Reads a file to its end or its EOF record, or none of it: a fault says why it cannot be
    /// opened or read, that it holds no position, or no one whose fields are numbers. Records of
    /// which a field is no number are left out, receivers with their source's; a warning counts
    /// them and names the first.
    static Result<P1File> read(const std::string& path, const Reporter& report,
                               Progress* progress = nullptr);
    /// The same from an open reader whose lines are cut at kColumns.
    static Result<P1File> read(LineReader& lines, const Reporter& report,
                               Progress* progress = nullptr);
    static constexpr std::size_t kColumns = 80;

    bool is_1984() const { return is_1984_; }
    std::span<const P1Position> sources() const { return sources_; }
    std::span<const P1Position> midpoints() const { return midpoints_; }  ///< C records
    std::span<const P1Position> bins() const { return bins_; }            ///< Q records
    std::int64_t groups() const { return static_cast<std::int64_t>(groups_.size()); }
    /// The data of the first header line with that code, such as "H1800"; empty without one.
    std::string header(std::string_view code) const;

    /// Whether the group numbers of some source's streamers overlap, as they do where every
    /// streamer begins again: a number alone is no group then.
    bool groups_restart() const { return groups_restart_; }
    /// A source's group, of one streamer or of any; null without one. `backwards`: the lowest
    /// number of a streamer stands for its last group, and so on.
    const P1Group* find_group(const P1Position& source, std::optional<int> streamer,
                              std::int64_t number, P1Count count, bool backwards) const;

    /// Whether all grid coordinates, or all geographical ones, are multiples of `unit`.
    bool coordinates_are_multiples(double unit, bool geographical) const;

private:
    /// Groups of one streamer whose numbers go on by one step, one after another in groups_.
    struct Run {
        std::int32_t streamer;
        std::int32_t first_number;
        std::int32_t step;  // 0: a single group
        std::uint32_t first;
        std::uint32_t count;

        std::int32_t last_number() const {
            return first_number + step * static_cast<std::int32_t>(count - 1);
        }
        std::optional<std::uint32_t> place(std::int64_t number) const;
    };
    class Parser;

    bool is_1984_ = false;
    bool groups_restart_ = false;
    std::vector<P1Position> sources_;
    std::vector<P1Position> midpoints_;
    std::vector<P1Position> bins_;
    std::vector<Run> runs_;  // those of one source together, by streamer
    std::vector<P1Group> groups_;
    std::vector<std::string> header_;  // lines
};

}  // namespace halvern
