#include "geometry/p1_record.h"

#include <algorithm>
#include <cmath>

#include "geometry/p1_columns.h"

namespace halvern {

namespace {

using namespace p1_columns;

void append(std::string& text, const ColumnRecord& record) {
    text += record.line();
    text += '\n';
}

/// Degrees, minutes and seconds up to the side's letter; false when it is no such angle.
bool put_angle(ColumnRecord& record, double seconds, Columns degrees, Columns side, double most,
               char positive, char negative) {
    if (std::isnan(seconds)) return true;
    if (!(std::fabs(seconds) <= most * 3600)) return false;
    const auto hundredths = std::llround(std::fabs(seconds) * 100);
    const auto padded = [](long long number, int width) {
        const std::string digits = std::to_string(number);
        return std::string(std::max<std::size_t>(static_cast<std::size_t>(width), digits.size()) -
                               digits.size(),
                           '0') +
               digits;
    };
    record.text({degrees.first, side.last},
                padded(hundredths / 360000, degrees.width()) + padded(hundredths / 6000 % 60, 2) +
                    padded(hundredths / 100 % 60, 2) + '.' + padded(hundredths % 100, 2) +
                    (seconds < 0 ? negative : positive));
    return true;
}

}  // namespace

void append_p1_header(std::string& text, std::string_view code, std::string_view description,
                      std::string_view data) {
    ColumnRecord record(P1File::kColumns);
    record.text({1, 5}, code);
    record.text(kHeaderText, description);
    record.text(kHeaderData, data);
    append(text, record);
}

int append_p1_position(std::string& text, char letter, const P1Position& position) {
    ColumnRecord record(P1File::kColumns);
    record.text({1, 1}, {&letter, 1});
    record.text(kLine, std::to_string(position.line));
    record.text(kVessel, "1");
    record.text(kSource, "1");
    record.number(kPoint, position.point);
    int misfits = 0;
    misfits += !put_angle(record, position.latitude_s, kLatitudeDegrees, kNorthSouth, 90, 'N', 'S');
    misfits +=
        !put_angle(record, position.longitude_s, kLongitudeDegrees, kEastWest, 360, 'E', 'W');
    record.number(kEasting, position.easting, 1);
    record.number(kNorthing, position.northing, 1);
    record.number(kWaterDepth, position.water_depth, 1);
    if (position.day != 0) {
        record.number(kDay, position.day);
        record.digits(kHour, position.second / 3600);
        record.digits(kMinute, position.second / 60 % 60);
        record.digits(kSecond, position.second % 60);
    }
    append(text, record);
    return misfits + record.misfits();
}

int append_p1_groups(std::string& text, int streamer, std::span<const NumberedP1Group> groups) {
    ColumnRecord record(P1File::kColumns);
    record.text({1, 1}, "R");
    int place = 0;
    for (const auto& [number, group] : groups.first(std::min<std::size_t>(groups.size(), 3))) {
        record.number(of_group(kGroupNumber, place), number);
        record.number(of_group(kGroupEasting, place), group.easting(), 1);
        record.number(of_group(kGroupNorthing, place), group.northing(), 1);
        record.number(of_group(kGroupDepth, place), group.depth, 1);
        ++place;
    }
    const char id = static_cast<char>(streamer < 10 ? '0' + streamer : 'A' + streamer - 10);
    record.text(kStreamer, {&id, 1});
    append(text, record);
    return record.misfits();
}

}  // namespace halvern
