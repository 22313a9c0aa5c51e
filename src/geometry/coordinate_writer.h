#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace halvern {

/// A point as trace headers give it: true positions, scalars applied.
struct SurveyPoint {
    int line = 0;
    int point = 0;
    int index = 0;  ///< tells points of one number apart
    double x = 0;
    double y = 0;
    double elevation = 0;
    double depth = 0;
    double water_depth = 0;
    int static_ms = 0;
    int uphole_ms = 0;
    int day = 0;   ///< of the year; 0: no time
    int time = 0;  ///< hhmmss
};

/// Points of one sort, each number once.
class PointList {
public:
    /// The place of the point with these numbers, which is added unless it is there.
    std::uint32_t add(const SurveyPoint& point);
    const std::vector<SurveyPoint>& points() const { return points_; }
    /// Points of which another position came, too.
    std::int64_t moved() const { return moved_; }
    /// Whether no point has a number although their positions differ.
    bool unnumbered() const { return !numbered_ && (moved_ > 0 || points_.size() > 1); }
    /// Places of the points in the order of their numbers.
    std::vector<std::uint32_t> sorted() const;

private:
    using Key = std::array<int, 3>;
    struct Hash {
        std::size_t operator()(const Key& key) const;
    };

    std::vector<SurveyPoint> points_;
    std::vector<bool> is_moved_;  // [points]
    std::unordered_map<Key, std::uint32_t, Hash> places_;
    std::uint32_t last_ = 0;  // the place that was given last
    std::int64_t moved_ = 0;
    bool numbered_ = false;
};

/// What a trace header says.
struct TraceGeometry {
    SurveyPoint source;
    SurveyPoint receiver;
    SurveyPoint midpoint;
    SurveyPoint bin;
    int ffid = 0;
    int channel = 0;
    int streamer = 0;
    bool arc_seconds = false;  ///< positions are longitude and latitude
};

/// What the head of a coordinate file says.
struct CoordinateHeading {
    std::string survey;
    std::string date;
    bool feet = false;
};

/// Collects the geometry of traces, and writes it as coordinate files in one format. Each point
/// is in the files once however many traces have it, and in the same place in whatever order
/// they come.
class CoordinateWriter {
public:
    virtual ~CoordinateWriter() = default;

    /// Extensions of its files.
    virtual std::vector<const char*> extensions() const = 0;
    /// Takes a trace. Why the format cannot hold it, as sentences; or an empty text.
    virtual std::string add(const TraceGeometry& trace) = 0;
    /// Ends collecting. Why the whole cannot be written, as sentences; or an empty text.
    virtual std::string finish() = 0;
    /// Writes one of the files, in pieces of whole lines.
    using Take = std::function<void(std::string_view text)>;
    virtual void write(std::size_t file, const CoordinateHeading& heading, const Take& take) = 0;
    /// What the files hold, for the log: "40 sources, 174 receivers, 80 relations".
    virtual std::string contents() const = 0;

    /// Numbers that did not fit their columns; known after all files are written.
    std::int64_t misfits() const { return misfits_; }
    /// Points that came with several positions, of which the first is written.
    virtual std::int64_t moved() const = 0;

protected:
    std::int64_t misfits_ = 0;
};

enum class PointChoice { kSourcesAndReceivers, kSources, kReceivers, kMidpoints, kBins };

/// SPS: points in .s and .r, relations in .x. Memory: the points, and a relation for each run of
/// channels.
std::unique_ptr<CoordinateWriter> make_sps_writer();
/// P1/90: sources and their receiver groups, by channel. Memory: the sources, and 20 bytes a group.
std::unique_ptr<CoordinateWriter> make_p1_writer();
/// Columns of text. Memory: the points.
std::unique_ptr<CoordinateWriter> make_column_writer(PointChoice choice);

}  // namespace halvern
