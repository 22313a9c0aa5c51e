#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "geometry/coordinate_writer.h"
#include "geometry/sps_record.h"

namespace halvern {

namespace {

constexpr int kMostFfid = 9999;
constexpr int kMostChannel = 9999;
constexpr int kMostIndex = 9;

/// Channels that go on by one, on receivers that go on by one step.
struct RelationRun {
    int ffid;
    std::uint32_t source;  // place in the list
    int receiver_line;
    int receiver_index;
    int first_channel;
    int last_channel;
    int first_point;
    int last_point;

    bool single() const { return first_channel == last_channel; }
    std::int64_t step() const {
        return single() ? 0
                        : (std::int64_t{last_point} - first_point) / (last_channel - first_channel);
    }
    auto order() const { return std::tie(ffid, first_channel, source, receiver_line); }

    bool shares_points(const RelationRun& other) const {
        return std::tie(ffid, source, receiver_line, receiver_index) ==
               std::tie(other.ffid, other.source, other.receiver_line, other.receiver_index);
    }
    /// Takes `next` into this run where it goes on with it.
    bool extend(const RelationRun& next) {
        const std::int64_t gap = std::int64_t{next.first_point} - last_point;
        if (!shares_points(next) || next.first_channel != last_channel + 1 ||
            (!single() && step() != gap) || (!next.single() && next.step() != gap)) {
            return false;
        }
        last_channel = next.last_channel;
        last_point = next.last_point;
        return true;
    }
    /// Whether a channel within both stands on the same points.
    bool agrees(const RelationRun& other, int channel) const {
        const auto point = [channel](const RelationRun& run) {
            return run.first_point + run.step() * (channel - run.first_channel);
        };
        return shares_points(other) && point(*this) == point(other);
    }
};

class SpsWriter final : public CoordinateWriter {
public:
    std::vector<const char*> extensions() const override { return {".s", ".r", ".x"}; }

    std::string add(const TraceGeometry& trace) override {
        const auto refuse = [](const char* word, int value, int most) {
            return std::string(word) + " " + std::to_string(value) +
                   " does not fit the SPS relation file, which holds 0 to " + std::to_string(most) +
                   ".  TYPE=1, P1/90, has no such limit.\n";
        };
        if (trace.ffid < 0 || trace.ffid > kMostFfid) return refuse("FFID", trace.ffid, kMostFfid);
        if (trace.channel < 0 || trace.channel > kMostChannel) {
            return refuse("CHAN", trace.channel, kMostChannel);
        }
        const std::uint32_t source = sources_.add(trace.source);
        receivers_.add(trace.receiver);
        const RelationRun run{.ffid = trace.ffid,
                              .source = source,
                              .receiver_line = trace.receiver.line,
                              .receiver_index = trace.receiver.index,
                              .first_channel = trace.channel,
                              .last_channel = trace.channel,
                              .first_point = trace.receiver.point,
                              .last_point = trace.receiver.point};
        if (runs_.empty() || !runs_.back().extend(run)) runs_.push_back(run);
        return {};
    }

    std::string finish() override {
        const std::pair<const PointList&, const char*> lists[] = {{sources_, "SOUPOINT"},
                                                                  {receivers_, "RECPOINT"}};
        for (const auto& [list, word] : lists) {
            if (!list.unnumbered()) continue;
            return std::string("The point number ") + word +
                   " is 0 in all traces, although their positions differ: SPS files could not "
                   "tell them apart.\n";
        }
        std::ranges::stable_sort(runs_, {}, &RelationRun::order);
        std::vector<RelationRun> joined;
        for (RelationRun run : runs_) {
            if (!joined.empty() && joined.back().ffid == run.ffid) {
                leave_out_known(run, joined.back());
                if (run.first_channel > run.last_channel || joined.back().extend(run)) continue;
            }
            joined.push_back(run);
        }
        runs_ = std::move(joined);
        return {};
    }

    void write(std::size_t file, const CoordinateHeading& heading, const Take& take) override {
        std::string text;
        append_sps_header(text, "H00", "SPS format version num.", "SPS001," + heading.date + ";");
        append_sps_header(text, "H01", "Description of survey area", heading.survey + ";");
        append_sps_header(text, "H02", "Date of survey", heading.date + ";");
        append_sps_header(text, "H20", "Description of grid units",
                          heading.feet ? "2,Feet,0.3048;" : "1,Metres,1.0;");
        take(text);
        if (file == 2) return write_relations(take);
        const PointList& list = file == 0 ? sources_ : receivers_;
        for (const std::uint32_t place : list.sorted()) {
            text.clear();
            misfits_ += append_sps_point(text, file == 0 ? 'S' : 'R', record(list.points()[place]));
            take(text);
        }
    }

    std::string contents() const override {
        return std::to_string(sources_.points().size()) + " sources, " +
               std::to_string(receivers_.points().size()) + " receivers, " +
               std::to_string(runs_.size()) + " relations";
    }
    std::int64_t moved() const override {
        return sources_.moved() + receivers_.moved() + other_points_;
    }

private:
    /// Cuts off channels that the run before it has, too.
    void leave_out_known(RelationRun& run, const RelationRun& before) {
        const std::int64_t step = run.step();
        bool other = false;
        for (; run.first_channel <= std::min(run.last_channel, before.last_channel);
             ++run.first_channel) {
            other = other || (run.first_channel >= before.first_channel &&
                              !run.agrees(before, run.first_channel));
            run.first_point = static_cast<int>(run.first_point + step);
        }
        other_points_ += other;
    }

    void write_relations(const Take& take) {
        std::string text;
        for (const RelationRun& run : runs_) {
            const SurveyPoint& source = sources_.points()[run.source];
            text.clear();
            misfits_ += append_sps_relation(text, "1",
                                            {.ffid = run.ffid,
                                             .ffid_increment = 1,
                                             .instrument = 1,
                                             .source_line = source.line,
                                             .source_point = source.point,
                                             .source_index = index_of(source.index),
                                             .first_channel = run.first_channel,
                                             .last_channel = run.last_channel,
                                             .channel_increment = 1,
                                             .receiver_line = run.receiver_line,
                                             .first_receiver = run.first_point,
                                             .last_receiver = run.last_point,
                                             .receiver_index = index_of(run.receiver_index)});
            take(text);
        }
    }

    static std::uint8_t index_of(int index) {
        return static_cast<std::uint8_t>(std::clamp(index, 0, kMostIndex));
    }

    /// The point as far as a record can hold it.
    SpsPoint record(const SurveyPoint& point) {
        const auto held = [](int value) {  // beyond any field's columns, too
            return static_cast<std::int16_t>(std::clamp(value, -32768, 32767));
        };
        // Records have depths without a sign.
        const auto depth = [this](double value) {
            if (value >= 0 && value < 9999.5) return static_cast<float>(value);
            ++misfits_;
            return std::numeric_limits<float>::quiet_NaN();
        };
        misfits_ += point.index < 0 || point.index > kMostIndex;
        return {.line = point.line,
                .point = point.point,
                .index = index_of(point.index),
                .static_ms = held(point.static_ms),
                .depth = depth(point.depth),
                .uphole_ms = held(point.uphole_ms),
                .water_depth = depth(point.water_depth),
                .easting = point.x,
                .northing = point.y,
                .elevation = static_cast<float>(point.elevation),
                .day = held(point.day),
                .time = point.time};
    }

    PointList sources_;
    PointList receivers_;
    std::vector<RelationRun> runs_;
    std::int64_t other_points_ = 0;  // runs with a channel that another has at other points
};

}  // namespace

std::unique_ptr<CoordinateWriter> make_sps_writer() { return std::make_unique<SpsWriter>(); }

}  // namespace halvern
