#include "geometry/sps_record.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <span>
#include <utility>

#include "geometry/decimal_field.h"

namespace halvern {

namespace {

constexpr std::size_t kRecordColumns = 80;

namespace point_columns {
constexpr Columns kLine{2, 17};
constexpr Columns kPoint{18, 25};
constexpr Columns kIndex{26, 26};
constexpr Columns kStatic{29, 32};
constexpr Columns kDepth{33, 36};
constexpr Columns kDatum{37, 40};
constexpr Columns kUphole{41, 42};
constexpr Columns kWaterDepth{43, 46};
constexpr Columns kEasting{47, 55};
constexpr Columns kNorthing{56, 65};
constexpr Columns kElevation{66, 71};
constexpr Columns kDay{72, 74};
constexpr Columns kTime{75, 80};
}  // namespace point_columns

namespace relation_columns {
constexpr Columns kTape{2, 7};
constexpr Columns kFfid{8, 11};
constexpr Columns kFfidIncrement{12, 12};
constexpr Columns kInstrument{13, 13};
constexpr Columns kSourceLine{14, 29};
constexpr Columns kSourcePoint{30, 37};
constexpr Columns kSourceIndex{38, 38};
constexpr Columns kFirstChannel{39, 42};
constexpr Columns kLastChannel{43, 46};
constexpr Columns kChannelIncrement{47, 47};
constexpr Columns kReceiverLine{48, 63};
constexpr Columns kFirstReceiver{64, 71};
constexpr Columns kLastReceiver{72, 79};
constexpr Columns kReceiverIndex{80, 80};
}  // namespace relation_columns

int integer(std::string_view line, Columns columns) { return decimal_int(cut(line, columns)); }
/// Fields of at most 4 columns, which no 16-bit number is too short for.
std::int16_t short_integer(std::string_view line, Columns columns) {
    return static_cast<std::int16_t>(integer(line, columns));
}
double real(std::string_view line, Columns columns) { return decimal_real(cut(line, columns)); }
float short_real(std::string_view line, Columns columns) {
    return static_cast<float>(real(line, columns));
}

std::uint8_t digit(std::string_view line, Columns columns) {
    const std::string_view field = cut(line, columns);
    const bool decimal = !field.empty() && field[0] >= '0' && field[0] <= '9';
    return decimal ? static_cast<std::uint8_t>(field[0] - '0') : 0;
}

SpsLineName name(std::string_view line, Columns columns) {
    SpsLineName name;
    name.fill(' ');
    const std::string_view field = cut(line, columns);
    std::copy(field.begin(), field.end(), name.begin());
    return name;
}

/// Columns from the end of a field's text to its last column; 0 for a blank field.
int slack(std::string_view line, Columns columns) {
    const std::size_t last = cut(line, columns).find_last_not_of(' ');
    if (last == std::string_view::npos) return 0;
    return columns.last - columns.first - static_cast<int>(last);
}

/// The first field's, when every other field that is not blank ends as many columns early, whatever
/// follows it; 0 when one does not, or when they all begin at their first columns.
int common_slack(std::string_view line, std::span<const Columns> fields) {
    const int common = slack(line, fields.front());
    if (common == 0) return 0;
    bool left_adjusted = true;
    for (const Columns columns : fields) {
        const std::string_view shifted = cut(line, {columns.first - common, columns.last - common});
        const FieldText held = classify_field(shifted);
        if (held == FieldText::kBlank) continue;
        const bool to_the_end = std::ssize(shifted) == columns.width();
        if (held != FieldText::kNumber || !to_the_end || shifted.back() == ' ') return 0;
        left_adjusted = left_adjusted && cut(line, columns).front() != ' ';
    }
    return left_adjusted ? 0 : common;
}

/// A depth's magnitude in 4 columns: a decimal as long as it fits.
void put_depth(ColumnRecord& record, Columns columns, float depth) {
    const double value = std::min<double>(std::fabs(depth), 9999.0);
    // 99.95 is below 100 but would be rounded to five characters.
    record.number(columns, value, std::nearbyint(value * 10) < 1000 ? 1 : 0);
}

int append(std::string& text, const ColumnRecord& record) {
    text += record.line();
    text += "\r\n";
    return record.misfits();
}

}  // namespace

int SpsRelation::receiver_point(int channel) const {
    return (channel - first_channel) * receiver_increment + first_receiver;
}

SpsPoint parse_sps_point(std::string_view line) {
    using namespace point_columns;
    return {
        .line_name = name(line, kLine),
        .line = integer(line, kLine),
        .point = integer(line, kPoint),
        .index = digit(line, kIndex),
        .static_ms = short_integer(line, kStatic),
        .depth = short_real(line, kDepth),
        .datum = short_integer(line, kDatum),
        .uphole_ms = short_integer(line, kUphole),
        .water_depth = short_real(line, kWaterDepth),
        .easting = real(line, kEasting),
        .northing = real(line, kNorthing),
        .elevation = short_real(line, kElevation),
        .day = short_integer(line, kDay),
        .time = integer(line, kTime),
    };
}

SpsRelation parse_sps_relation(std::string_view line) {
    using namespace relation_columns;
    SpsRelation record{
        .ffid = integer(line, kFfid),
        .ffid_increment = digit(line, kFfidIncrement),
        .instrument = digit(line, kInstrument),
        .source_line_name = name(line, kSourceLine),
        .source_line = integer(line, kSourceLine),
        .source_point = integer(line, kSourcePoint),
        .source_index = digit(line, kSourceIndex),
        .first_channel = integer(line, kFirstChannel),
        .last_channel = integer(line, kLastChannel),
        .channel_increment = digit(line, kChannelIncrement),
        .receiver_line_name = name(line, kReceiverLine),
        .receiver_line = integer(line, kReceiverLine),
        .first_receiver = integer(line, kFirstReceiver),
        .last_receiver = integer(line, kLastReceiver),
        .receiver_index = digit(line, kReceiverIndex),
    };
    if (record.last_channel < record.first_channel) {
        std::swap(record.first_channel, record.last_channel);
        std::swap(record.first_receiver, record.last_receiver);
    }
    // The fields have 4 and 8 columns, so that no difference leaves 32 bits.
    const int channels = record.last_channel - record.first_channel;
    if (channels != 0) {
        record.receiver_increment = (record.last_receiver - record.first_receiver) / channels;
    }
    return record;
}

std::optional<FieldFault> find_sps_point_fault(std::string_view line) {
    using namespace point_columns;
    if (is_blank(line, kPoint)) return FieldFault{"point number", kPoint.first, kPoint.last};
    static constexpr NamedColumns kFields[] = {
        {"point number", kPoint}, {"easting", kEasting}, {"northing", kNorthing}};
    return find_fault(line, kFields);
}

std::optional<FieldFault> find_sps_relation_fault(std::string_view line) {
    using namespace relation_columns;
    if (is_blank(line, kFfid) && is_blank(line, kFirstChannel)) {
        return FieldFault{"field record number", kFfid.first, kFfid.last};
    }
    static constexpr NamedColumns kFields[] = {
        {"field record number", kFfid},     {"source point number", kSourcePoint},
        {"first channel", kFirstChannel},   {"last channel", kLastChannel},
        {"first receiver", kFirstReceiver}, {"last receiver", kLastReceiver}};
    return find_fault(line, kFields);
}

// The first field is one that has blanks after it in a shifted record. Line names are left-adjusted
// by right.
int sps_point_slack(std::string_view line) {
    using namespace point_columns;
    static constexpr Columns kFields[] = {kEasting,   kNorthing, kPoint,  kStatic,
                                          kDepth,     kDatum,    kUphole, kWaterDepth,
                                          kElevation, kDay,      kTime};
    return common_slack(line, kFields);
}

int sps_relation_slack(std::string_view line) {
    using namespace relation_columns;
    static constexpr Columns kFields[] = {kFirstChannel, kLastChannel,   kFfid,
                                          kSourcePoint,  kFirstReceiver, kLastReceiver};
    return common_slack(line, kFields);
}

int append_sps_point(std::string& text, char letter, const SpsPoint& point) {
    using namespace point_columns;
    ColumnRecord record(kRecordColumns);
    record.text({1, 1}, {&letter, 1});
    record.text(kLine, std::to_string(point.line));
    record.number(kPoint, point.point);
    record.number(kIndex, std::min<int>(point.index, 9));
    record.number(kStatic, point.static_ms);
    put_depth(record, kDepth, point.depth);
    record.number(kDatum, point.datum);
    record.number(kUphole, point.uphole_ms);
    put_depth(record, kWaterDepth, point.water_depth);
    record.number(kEasting, point.easting, 1);
    record.number(kNorthing, point.northing, 1);
    record.number(kElevation, point.elevation, 1);
    record.number(kDay, point.day);
    record.number(kTime, point.time);
    return append(text, record);
}

int append_sps_relation(std::string& text, std::string_view tape, const SpsRelation& relation) {
    using namespace relation_columns;
    ColumnRecord record(kRecordColumns);
    record.text({1, 1}, "X");
    record.text(kTape, tape);
    record.number(kFfid, relation.ffid);
    record.number(kFfidIncrement, relation.ffid_increment);
    record.number(kInstrument, relation.instrument);
    record.text(kSourceLine, std::to_string(relation.source_line));
    record.number(kSourcePoint, relation.source_point);
    record.number(kSourceIndex, relation.source_index);
    record.number(kFirstChannel, relation.first_channel);
    record.number(kLastChannel, relation.last_channel);
    record.number(kChannelIncrement, relation.channel_increment);
    record.text(kReceiverLine, std::to_string(relation.receiver_line));
    record.number(kFirstReceiver, relation.first_receiver);
    record.number(kLastReceiver, relation.last_receiver);
    record.number(kReceiverIndex, relation.receiver_index);
    return append(text, record);
}

void append_sps_header(std::string& text, std::string_view type, std::string_view description,
                       std::string_view data) {
    ColumnRecord record(kRecordColumns);
    record.text({1, 4}, type);
    record.text({5, 32}, description);
    record.text({33, 80}, data);
    append(text, record);
}

SpsLineName sps_line_name(int line) {
    SpsLineName name;
    name.fill(' ');
    const std::string digits = std::to_string(line);
    std::copy_n(digits.begin(), std::min(digits.size(), name.size()), name.begin());
    return name;
}

}  // namespace halvern
