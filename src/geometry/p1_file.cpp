#include "geometry/p1_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "geometry/decimal_field.h"
#include "geometry/p1_columns.h"

namespace halvern {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kMostHeaderLines = 1000;
/// Room for more groups is not made before some were read: the file may hold something else.
constexpr std::int64_t kMostExpectedGroups = std::int64_t{1} << 24;  // about 200 MB
constexpr double kSecondsPerDegree = 3600;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// A number, or NaN where its field is blank.
double real(std::string_view line, Columns columns, int decimals) {
    return is_blank(line, columns) ? kNone : decimal_real(cut(line, columns), decimals);
}

int integer(std::string_view line, Columns columns) { return decimal_int(cut(line, columns)); }

/// The first number in a name: 1 in "LINE-0001", 1042 in "1042P001".
int number_in(std::string_view name) {
    return decimal_int(name.substr(std::min(name.find_first_of("0123456789"), name.size())));
}

bool is_multiple(double value, double unit) {
    const double times = value / unit;
    return std::isnan(value) || std::fabs(times - std::round(times)) < 1e-4;
}

}  // namespace

std::optional<std::uint32_t> P1File::Run::place(std::int64_t number) const {
    const std::int64_t ahead = number - first_number;
    if (ahead == 0) return first;
    if (step == 0 || ahead % step != 0 || ahead / step < 0 || ahead / step >= count) return {};
    return first + static_cast<std::uint32_t>(ahead / step);
}

/// Takes a file's lines one by one.
class P1File::Parser {
public:
    /// `bytes`: of the file.
    Parser(P1File& file, std::int64_t bytes) : file_(file), bytes_(bytes) {}

    /// `ended`: the line came with its end. False at the record that ends the file.
    bool take(std::string_view line, std::int64_t number, bool ended) {
        if (line.find_first_not_of(" \t\x1a") == line.npos) return true;
        if (line.starts_with("EOF") && line.find_first_not_of(' ', 3) == line.npos) return false;
        line_number_ = number;
        cut_off_ = !ended && line.size() < kColumns;
        if (line[0] == 'H') {
            take_header(line);
        } else if (file_.is_1984_) {
            // It has positions of one kind, whatever their letter.
            if (records_ == 0) letter_1984_ = line[0];
            if (line[0] == letter_1984_) take_source(line);
        } else {
            take_record(line);
        }
        return true;
    }

    /// Why the file cannot be used, or warnings about records that were left out.
    Fault finish(const Reporter& report) {
        end_source();
        if (records_ == 0) {
            return Fault(first_other_.empty() ? "it holds no position record"
                                              : "it holds no position record: " + first_other_);
        }
        if (faulty_ == records_) return Fault(first_fault_);
        if (faulty_ > 0) {
            report.Warning("%lld of %lld records are left out: %s.\n",
                           static_cast<long long>(faulty_), static_cast<long long>(records_),
                           first_fault_.c_str());
        }
        if (pointless_line_ > 0) {
            report.Warning(
                "Line %lld: a coordinate without a decimal point: its last digit counts tenths.\n",
                static_cast<long long>(pointless_line_));
        }
        return {};
    }

private:
    enum class AngleUnit { kDegreesMinutesSeconds, kGrads, kDegrees };

    std::string at_line(const std::string& text) const {
        return "line " + std::to_string(line_number_) + text;
    }

    /// Counts a record that cannot be used.
    void refuse(const std::optional<FieldFault>& fault) {
        if (faulty_++ > 0) return;
        first_fault_ = fault ? at_line(", columns " + std::to_string(fault->first_column) + "-" +
                                       std::to_string(fault->last_column) + ": the " +
                                       fault->field + " cannot be read")
                             : at_line(": a receiver group before any source");
    }

    /// The first of the fields that is no number, or in which the file breaks off.
    std::optional<FieldFault> find_unreadable(std::string_view line,
                                              std::span<const NamedColumns> fields) const {
        if (cut_off_) {
            const int end = static_cast<int>(line.size());
            for (const auto& [name, columns] : fields) {
                if (columns.first <= end && end < columns.last) {
                    return FieldFault{name, columns.first, columns.last};
                }
            }
        }
        return find_fault(line, fields);
    }

    void take_header(std::string_view line) {
        if (file_.header_.size() < kMostHeaderLines) file_.header_.emplace_back(line);
        if (!version_named_) {
            const bool is_1984 = line.find("P1/84") != line.npos;
            version_named_ = is_1984 || line.find("P1/90") != line.npos;
            // Codes have three digits in the one version and four in the other.
            if (version_named_ || file_.header_.size() == 1) {
                file_.is_1984_ = is_1984 || (!version_named_ && line.size() > 4 &&
                                             is_digit(line[3]) && !is_digit(line[4]));
            }
        }
        if (line.starts_with("H2002")) {
            const std::string_view data = cut(line, p1_columns::kHeaderData);
            const std::size_t code = data.find_first_of("123");
            if (code != data.npos) angles_ = static_cast<AngleUnit>(data[code] - '1');
        }
    }

    void take_record(std::string_view line) {
        P1Position position;
        switch (line[0]) {
            case 'S':
                return take_source(line);
            case 'C':
                if (parse(line, position)) file_.midpoints_.push_back(position);
                return;
            case 'Q':
                if (parse(line, position)) file_.bins_.push_back(position);
                return;
            case 'E':  // the echo sounder's depth, where the source's own record has none
                if (open_ && std::isnan(file_.sources_.back().water_depth) &&
                    classify_field(cut(line, p1_columns::kWaterDepth)) != FieldText::kOther) {
                    file_.sources_.back().water_depth =
                        static_cast<float>(real(line, p1_columns::kWaterDepth, 1));
                }
                return;
            case 'R':
                return take_groups(line);
            default:
                if (first_other_.empty() && !std::strchr("GATVZX", line[0])) {
                    first_other_ = at_line(std::isprint(static_cast<unsigned char>(line[0]))
                                               ? std::string(" begins with '") + line[0] + "'"
                                               : " begins with no letter");
                }
        }
    }

    void take_source(std::string_view line) {
        end_source();
        P1Position position;
        source_seen_ = true;
        open_ = parse(line, position);
        if (!open_) return;
        position.first_run = static_cast<std::uint32_t>(file_.runs_.size());
        file_.sources_.push_back(position);
    }

    bool parse(std::string_view line, P1Position& position) {
        using namespace p1_columns;
        const bool old = file_.is_1984_;
        const NamedColumns fields[] = {{"point number", old ? kPoint1984 : kPoint},
                                       {"easting", kEasting},
                                       {"northing", kNorthing},
                                       {"water depth", kWaterDepth}};
        ++records_;
        std::optional<FieldFault> fault = find_unreadable(line, fields);
        const Columns point = fields[0].columns;
        if (is_blank(line, point)) fault = {fields[0].name, point.first, point.last};
        const auto latitude = angle(line, kLatitudeDegrees, kLatitudeMinutes, kLatitudeSeconds,
                                    kNorthSouth, "NS", 90);
        const auto longitude = angle(line, kLongitudeDegrees, kLongitudeMinutes, kLongitudeSeconds,
                                     kEastWest, "EW", 360);
        if (!latitude) fault = {"latitude", kLatitudeDegrees.first, kNorthSouth.last};
        if (!longitude) fault = {"longitude", kLongitudeDegrees.first, kEastWest.last};
        if (fault) {
            refuse(fault);
            return false;
        }
        const std::string_view name = cut(line, old ? kLine1984 : kLine);
        position.line_name.fill(' ');
        std::ranges::copy(name, position.line_name.begin());
        position.line = number_in(name);
        position.point = integer(line, point);
        position.latitude_s = *latitude;
        position.longitude_s = *longitude;
        position.easting = coordinate(line, kEasting);
        position.northing = coordinate(line, kNorthing);
        position.water_depth = static_cast<float>(real(line, kWaterDepth, 1));
        position.day = static_cast<std::int16_t>(integer(line, kDay));
        position.second =
            (integer(line, kHour) * 60 + integer(line, kMinute)) * 60 + integer(line, kSecond);
        return true;
    }

    /// Arc seconds, NaN where the field is blank; nothing when it is no angle up to `most` degrees.
    std::optional<double> angle(std::string_view line, Columns degrees, Columns minutes,
                                Columns seconds, Columns side, const char* sides,
                                double most) const {
        const Columns whole{degrees.first, seconds.last};
        if (is_blank(line, whole)) return kNone;
        const std::string_view letter = cut(line, side);
        const bool named = !letter.empty() && (letter[0] == sides[0] || letter[0] == sides[1]);
        double value = 0;
        if (angles_ == AngleUnit::kDegreesMinutesSeconds) {
            const NamedColumns fields[] = {{"", degrees}, {"", minutes}, {"", seconds}};
            if (!named || find_fault(line, fields)) return {};
            value = integer(line, degrees) * kSecondsPerDegree + integer(line, minutes) * 60.0 +
                    decimal_real(cut(line, seconds), 2);
        } else {
            const NamedColumns field[] = {{"", whole}};
            const bool blank = letter.empty() || letter[0] == ' ';
            if ((!named && !blank) || find_fault(line, field)) return {};
            value = decimal_real(cut(line, whole), 6) * kSecondsPerDegree;
            if (angles_ == AngleUnit::kGrads) value *= 0.9;
        }
        if (!(std::fabs(value) <= most * kSecondsPerDegree)) return {};
        return named && letter[0] == sides[1] ? -value : value;
    }

    double coordinate(std::string_view line, Columns columns) {
        const std::string_view field = cut(line, columns);
        const double value = real(line, columns, 1);
        if (pointless_line_ == 0 && !std::isnan(value) && field.find('.') == field.npos) {
            pointless_line_ = line_number_;
        }
        return value;
    }

    void take_groups(std::string_view line) {
        using namespace p1_columns;
        if (!open_) {
            if (source_seen_) return;  // left out with its source
            ++records_;
            return refuse({});
        }
        if (file_.groups_.empty()) {
            const std::int64_t records = bytes_ / static_cast<std::int64_t>(kColumns);
            file_.groups_.reserve(static_cast<std::size_t>(
                std::min(records * kGroupsPerRecord, kMostExpectedGroups)));
        }
        const std::string_view id = cut(line, kStreamer);
        const char letter = id.empty() || id[0] == ' ' ? '1' : id[0];
        const int streamer = is_digit(letter) ? letter - '0' : letter - 'A' + 10;
        for (int i = 0; i < kGroupsPerRecord; ++i) {
            const NamedColumns fields[] = {{"group number", of_group(kGroupNumber, i)},
                                           {"group's easting", of_group(kGroupEasting, i)},
                                           {"group's northing", of_group(kGroupNorthing, i)},
                                           {"group's depth", of_group(kGroupDepth, i)}};
            const std::string_view number = cut(line, fields[0].columns);
            if (number.size() < 4 || !is_digit(number.back())) continue;
            ++records_;
            std::optional<FieldFault> fault = find_unreadable(line, fields);
            std::array<std::int32_t, 2> hundredths{};
            for (std::size_t axis = 0; axis < 2 && !fault; ++axis) {
                const auto& [name, columns] = fields[1 + axis];
                const double value = std::round(coordinate(line, columns) * 100);
                using Limits = std::numeric_limits<std::int32_t>;
                if (value >= Limits::min() && value <= Limits::max()) {
                    hundredths[axis] = static_cast<std::int32_t>(value);
                } else {  // NaN: blank
                    fault = {name, columns.first, columns.last};
                }
            }
            if (fault) {
                refuse(fault);
                continue;
            }
            file_.groups_.push_back({hundredths[0], hundredths[1],
                                     static_cast<float>(real(line, fields[3].columns, 1))});
            add_to_run(streamer, decimal_int(number));
        }
    }

    /// Takes the last group into the run before it, or begins a new one.
    void add_to_run(int streamer, int number) {
        const auto place = static_cast<std::uint32_t>(file_.groups_.size() - 1);
        auto& runs = file_.runs_;
        if (runs.size() > file_.sources_.back().first_run && runs.back().streamer == streamer) {
            Run& run = runs.back();
            const std::int32_t step = run.count == 1 ? number - run.first_number : run.step;
            if (step != 0 && number == run.last_number() + step) {
                run.step = step;
                ++run.count;
                return;
            }
        }
        runs.push_back({streamer, number, 0, place, 1});
    }

    /// Brings the receiver groups of the last source in order.
    void end_source() {
        if (!open_) return;
        open_ = false;
        P1Position& source = file_.sources_.back();
        source.end_run = static_cast<std::uint32_t>(file_.runs_.size());
        const auto runs = std::span(file_.runs_).subspan(source.first_run);
        std::ranges::stable_sort(runs, {}, &Run::streamer);
        if (runs.empty() || runs.front().streamer == runs.back().streamer) return;
        ranges_.clear();
        for (const Run& run : runs) {
            const auto [low, high] = std::minmax({run.first_number, run.last_number()});
            if (ranges_.empty() || ranges_.back().streamer != run.streamer) {
                ranges_.push_back({run.streamer, low, high});
            } else {
                ranges_.back().low = std::min(ranges_.back().low, low);
                ranges_.back().high = std::max(ranges_.back().high, high);
            }
        }
        std::ranges::sort(ranges_, {}, &Range::low);
        const auto overlap = [](const Range& a, const Range& b) { return b.low <= a.high; };
        if (std::ranges::adjacent_find(ranges_, overlap) != ranges_.end()) {
            file_.groups_restart_ = true;
        }
    }

    struct Range {
        std::int32_t streamer, low, high;  // of its group numbers
    };

    P1File& file_;
    std::int64_t bytes_;
    AngleUnit angles_ = AngleUnit::kDegreesMinutesSeconds;
    bool version_named_ = false;
    bool source_seen_ = false;
    bool open_ = false;  // whether the last source takes receiver groups
    char letter_1984_ = 0;
    std::vector<Range> ranges_;
    std::int64_t line_number_ = 0;
    bool cut_off_ = false;      // the line is the file's last, and may lack a part
    std::int64_t records_ = 0;  // positions and receiver groups
    std::int64_t faulty_ = 0;
    std::int64_t pointless_line_ = 0;  // the first with a coordinate without a point
    std::string first_fault_;
    std::string first_other_;
};

Result<P1File> P1File::read(const std::string& path, const Reporter& report, Progress* progress) {
    LineReader lines(path, kColumns);
    return read(lines, report, progress);
}

Result<P1File> P1File::read(LineReader& lines, const Reporter& report, Progress* progress) {
    if (!lines.opened()) return lines.fault();
    ProgressStep step(progress, "Reading P1 File.");
    P1File file;
    Parser parser(file, lines.bytes());
    std::string_view line;
    bool any_ended = false;
    std::int64_t last_line = 0;
    while (lines.next(line)) {
        if (!step.reach(std::min(lines.position(), lines.bytes()), lines.bytes())) {
            return Fault("reading was stopped");
        }
        any_ended = any_ended || lines.ended();
        // What goes on beyond the last column is no record, except where no line ever ends, as in
        // a file that was copied from tape.
        const bool goes_on = std::exchange(last_line, lines.line_number()) == lines.line_number();
        if (goes_on && any_ended) continue;
        if (!parser.take(line, lines.line_number(), lines.ended())) break;
    }
    if (lines.fault()) return lines.fault();
    if (Fault fault = parser.finish(report)) return fault;
    return file;
}

std::string P1File::header(std::string_view code) const {
    const auto line = std::ranges::find_if(
        header_, [code](const std::string& text) { return text.starts_with(code); });
    if (line == header_.end()) return {};
    const std::string_view data = cut(*line, p1_columns::kHeaderData);
    const std::size_t end = data.find_last_not_of(' ');
    return std::string(data.substr(0, end == data.npos ? 0 : end + 1));
}

const P1Group* P1File::find_group(const P1Position& source, std::optional<int> streamer,
                                  std::int64_t number, P1Count count, bool backwards) const {
    const auto runs = std::span(runs_).subspan(source.first_run, source.end_run - source.first_run);
    std::int64_t before = 0;  // groups of the streamers that were passed
    for (std::size_t at = 0; at < runs.size();) {
        std::size_t end = at;
        std::int64_t low = runs[at].first_number, high = low;
        for (; end < runs.size() && runs[end].streamer == runs[at].streamer; ++end) {
            const auto [first, last] =
                std::minmax({runs[end].first_number, runs[end].last_number()});
            low = std::min<std::int64_t>(low, first);
            high = std::max<std::int64_t>(high, last);
        }
        if (!streamer || *streamer == runs[at].streamer) {
            const std::int64_t ahead =
                count == P1Count::kNumber ? number - low : number - before - 1;
            before += high - low + 1;
            if (ahead >= 0 && ahead <= high - low) {
                const std::int64_t group = backwards ? high - ahead : low + ahead;
                for (const Run& run : runs.subspan(at, end - at)) {
                    if (const auto place = run.place(group)) return &groups_[*place];
                }
            }
        }
        at = end;
    }
    return nullptr;
}

bool P1File::coordinates_are_multiples(double unit, bool geographical) const {
    for (const auto* positions : {&sources_, &midpoints_, &bins_}) {
        for (const P1Position& position : *positions) {
            if (!is_multiple(geographical ? position.latitude_s : position.easting, unit) ||
                !is_multiple(geographical ? position.longitude_s : position.northing, unit)) {
                return false;
            }
        }
    }
    return geographical || std::ranges::all_of(groups_, [unit](const P1Group& group) {
               return is_multiple(group.easting(), unit) && is_multiple(group.northing(), unit);
           });
}

}  // namespace halvern
