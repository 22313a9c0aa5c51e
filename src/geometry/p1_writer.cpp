#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <tuple>

#include "geometry/coordinate_writer.h"
#include "geometry/p1_record.h"

namespace halvern {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kMostGroup = 9999;
constexpr int kMostPoint = 999999;
constexpr double kMostCoordinate = 9999999.9;

/// A receiver group of a source.
struct Group {
    std::uint32_t source;  // place in the list
    std::int16_t streamer;
    std::int16_t number;
    P1Group group;

    Group(std::uint32_t place, int streamer_id, int channel, P1Group position)
        : source(place),
          streamer(static_cast<std::int16_t>(streamer_id)),
          number(static_cast<std::int16_t>(channel)),
          group(position) {}
    auto order() const { return std::tie(source, streamer, number); }
};

class P1Writer final : public CoordinateWriter {
public:
    std::vector<const char*> extensions() const override { return {".p190"}; }

    std::string add(const TraceGeometry& trace) override {
        const auto refuse = [](const char* what, int value, int least, int most) {
            return std::string("The ") + what + " " + std::to_string(value) +
                   " does not fit P1/90, which holds " + std::to_string(least) + " to " +
                   std::to_string(most) + ".\n";
        };
        if (trace.source.point < 0 || trace.source.point > kMostPoint) {
            return refuse("point number", trace.source.point, 0, kMostPoint);
        }
        if (trace.channel < 0 || trace.channel > kMostGroup) {
            return refuse("channel", trace.channel, 0, kMostGroup);
        }
        if (trace.streamer < 1 || trace.streamer > kMostP1Streamers) {
            return refuse("streamer", trace.streamer, 1, kMostP1Streamers);
        }
        SurveyPoint source = trace.source;
        source.index = 0;  // which records do not have
        const std::uint32_t place = sources_.add(source);
        if (is_geographical_.size() < sources_.points().size()) {
            is_geographical_.push_back(trace.arc_seconds);
        }
        if (trace.arc_seconds) return {};
        const SurveyPoint& receiver = trace.receiver;
        if (!(std::fabs(receiver.x) <= kMostCoordinate &&
              std::fabs(receiver.y) <= kMostCoordinate)) {
            ++misfits_;
            return {};
        }
        groups_.push_back(
            {place,
             trace.streamer,
             trace.channel,
             {static_cast<std::int32_t>(std::llround(receiver.x * 100)),
              static_cast<std::int32_t>(std::llround(receiver.y * 100)),
              static_cast<float>(receiver.elevation < 0 ? -receiver.elevation : kNone)}});
        return {};
    }

    std::string finish() override {
        if (sources_.unnumbered()) {
            return "The point number is 0 in all traces, although their positions differ.  "
                   "POINTHEADER names another header word.\n";
        }
        const auto same = [this](const Group& a, const Group& b) {
            if (a.order() != b.order()) return false;
            other_positions_ += a.group.easting_hundredths != b.group.easting_hundredths ||
                                a.group.northing_hundredths != b.group.northing_hundredths;
            return true;
        };
        if (!std::ranges::is_sorted(groups_, {}, &Group::order)) {
            std::ranges::stable_sort(groups_, {}, &Group::order);
        }
        groups_.erase(std::unique(groups_.begin(), groups_.end(), same), groups_.end());
        return {};
    }

    void write(std::size_t, const CoordinateHeading& heading, const Take& take) override {
        std::string text;
        const auto header = [&](const char* code, const char* description,
                                const std::string& data) {
            append_p1_header(text, code, description, data);
        };
        header("H0100", "SURVEY AREA", heading.survey);
        header("H0102", "VESSEL DETAILS", "1");
        header("H0103", "SOURCE DETAILS", "1");
        header("H0200", "DATE OF SURVEY", heading.date);
        header("H0202", "TAPE VERSION", "UKOOA-P1/90");
        header("H0203", "LINE PREFIX", "");
        header("H2000", "GRID UNIT",
               heading.feet ? "2FEET            0.3048" : "1METRES          1.0");
        header("H2001", "HEIGHT UNIT",
               heading.feet ? "2FEET            0.3048" : "1METRES          1.0");
        header("H2002", "ANGULAR UNIT", "1DEGREES");
        header("H2600", "MADE FROM TRACE HEADERS", "");
        take(text);

        auto group = groups_.begin();
        for (std::uint32_t place = 0; place < sources_.points().size(); ++place) {
            text.clear();
            misfits_ += append_p1_position(text, 'S', record(place));
            while (group != groups_.end() && group->source == place) {
                std::array<NumberedP1Group, kMostP1Groups> line;
                std::size_t count = 0;
                const int streamer = group->streamer;
                for (; count < line.size() && group != groups_.end() && group->source == place &&
                       group->streamer == streamer;
                     ++count, ++group) {
                    line[count] = {group->number, group->group};
                }
                misfits_ += append_p1_groups(text, streamer, std::span(line).first(count));
            }
            take(text);
        }
        take("EOF" + std::string(P1File::kColumns - 3, ' ') + "\n");
    }

    std::string contents() const override {
        return std::to_string(sources_.points().size()) + " sources, " +
               std::to_string(groups_.size()) + " receiver groups";
    }
    std::int64_t moved() const override { return sources_.moved() + other_positions_; }

private:
    P1Position record(std::uint32_t place) const {
        const SurveyPoint& source = sources_.points()[place];
        const bool geographical = is_geographical_[place];
        const int time = source.time;
        return {
            .line = source.line,
            .point = source.point,
            .latitude_s = geographical ? source.y : kNone,
            .longitude_s = geographical ? source.x : kNone,
            .easting = geographical ? kNone : source.x,
            .northing = geographical ? kNone : source.y,
            .water_depth = static_cast<float>(source.water_depth != 0 ? source.water_depth : kNone),
            .day = static_cast<std::int16_t>(std::clamp(source.day, 0, 999)),
            .second = (time / 10000 % 100 * 60 + time / 100 % 100) * 60 + time % 100};
    }

    PointList sources_;
    std::vector<bool> is_geographical_;  // [sources]
    std::deque<Group> groups_;           // which grows without moving what it holds
    std::int64_t other_positions_ = 0;
};

}  // namespace

std::unique_ptr<CoordinateWriter> make_p1_writer() { return std::make_unique<P1Writer>(); }

}  // namespace halvern
