#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "geometry/columns.h"

namespace halvern {

/// A line name as its 16 columns hold it, blanks kept. Two names are one line when they are equal
/// character by character: "101" on the left is another line than "101" on the right.
using SpsLineName = std::array<char, 16>;

/// A source (letter S) or receiver (letter R) point. Lengths are in the survey's unit, m or ft.
struct SpsPoint {
    SpsLineName line_name{};
    int line = 0;  ///< the name's integer value
    int point = 0;
    std::uint8_t index = 0;      ///< 0 … 9; tells points of one number apart
    std::int16_t static_ms = 0;  ///< static correction
    float depth = 0;             ///< of the source or receiver below the surface
    std::int16_t datum = 0;      ///< seismic datum
    std::int16_t uphole_ms = 0;
    float water_depth = 0;
    double easting = 0;
    double northing = 0;
    float elevation = 0;   ///< of the surface
    std::int16_t day = 0;  ///< of the year
    int time = 0;          ///< hhmmss
};

/// Which receivers the channels of one field record stand on: first_channel … last_channel on
/// first_receiver, then one receiver_increment further each. The channels ascend.
struct SpsRelation {
    int ffid = 0;
    std::uint8_t ffid_increment = 0;
    std::uint8_t instrument = 0;
    SpsLineName source_line_name{};
    int source_line = 0;
    int source_point = 0;
    std::uint8_t source_index = 0;
    int first_channel = 0;
    int last_channel = 0;
    std::uint8_t channel_increment = 0;
    SpsLineName receiver_line_name{};
    int receiver_line = 0;
    int first_receiver = 0;
    int last_receiver = 0;
    std::uint8_t receiver_index = 0;
    int receiver_increment = 0;  ///< derived: receivers per channel, a whole number; 0: all on one

    /// The receiver point of a channel within first_channel … last_channel.
    int receiver_point(int channel) const;
};

/// The record in a line of which the first character is its letter, by the columns of revision 0.
/// Every line can be read: fields that are blank, cut off or not numbers are 0.
SpsPoint parse_sps_point(std::string_view line);
/// A record whose channels descend is turned round, its receivers with it.
SpsRelation parse_sps_relation(std::string_view line);

/// The first of a record's key fields (point number and coordinates; file number, points, channels
/// and receivers) that does not begin with a number, has a second one after a blank, or is blank
/// where that leaves the record without meaning. Letters after the number are no fault.
std::optional<FieldFault> find_sps_point_fault(std::string_view line);
std::optional<FieldFault> find_sps_relation_fault(std::string_view line);

/// How many columns all numbers of a record end before their columns do, blank ones left out; 0
/// when they end unequally far or are all left-adjusted. Where it is the same in every record of a
/// file, the records are shifted to the left.
int sps_point_slack(std::string_view line);
int sps_relation_slack(std::string_view line);

/// Appends the record's line with its CR LF, and gives how many of its numbers did not fit their
/// columns, which then stay blank. The line name is written as its integer value. Indexes above 9
/// are written as 9, depths as magnitudes up to 9999; real numbers that are NaN as blanks.
int append_sps_point(std::string& text, char letter, const SpsPoint& point);
/// `tape` fills the six columns of the field tape number.
int append_sps_relation(std::string& text, std::string_view tape, const SpsRelation& relation);
/// A header line: type and modifier ("H00", "H26"), a description of up to 28 characters and data
/// of up to 48.
void append_sps_header(std::string& text, std::string_view type, std::string_view description,
                       std::string_view data);

/// A number as a line name: left-adjusted, filled with blanks.
SpsLineName sps_line_name(int line);

}  // namespace halvern
