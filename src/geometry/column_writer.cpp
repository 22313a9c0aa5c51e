#include <algorithm>

#include "geometry/columns.h"
#include "geometry/coordinate_writer.h"

namespace halvern {

namespace {

constexpr std::size_t kWidth = 98;
constexpr int kDecimals = 2;
constexpr Columns kLetter{1, 1};
constexpr Columns kNumbers[] = {{2, 13}, {15, 25}, {27, 37}};
constexpr Columns kPosition[] = {{39, 53}, {55, 69}};
constexpr Columns kHeights[] = {{71, 79}, {81, 89}, {91, 98}};

/// A sort of points: the letter that its lines begin with, and its columns' headings.
struct Sort {
    char letter;
    const char* name;
    std::array<const char*, 8> headings;
};
constexpr Sort kSorts[] = {
    {'S', "sources", {"LINE", "POINT", "INDEX", "X", "Y", "ELEVATION", "DEPTH", "WATER"}},
    {'R', "receivers", {"LINE", "POINT", "INDEX", "X", "Y", "ELEVATION", "DEPTH", "WATER"}},
    {'C', "mid-points", {"INLINE", "CDPN", "XLINE", "X", "Y", "", "", ""}},
    {'Q', "bins", {"INLINE", "CDPN", "XLINE", "X", "Y", "", "", ""}},
};

class ColumnWriter final : public CoordinateWriter {
public:
    explicit ColumnWriter(PointChoice choice) {
        switch (choice) {
            case PointChoice::kSourcesAndReceivers:
                parts_ = {{&kSorts[0], &TraceGeometry::source},
                          {&kSorts[1], &TraceGeometry::receiver}};
                break;
            case PointChoice::kSources:
                parts_ = {{&kSorts[0], &TraceGeometry::source}};
                break;
            case PointChoice::kReceivers:
                parts_ = {{&kSorts[1], &TraceGeometry::receiver}};
                break;
            case PointChoice::kMidpoints:
                parts_ = {{&kSorts[2], &TraceGeometry::midpoint}};
                break;
            case PointChoice::kBins:
                parts_ = {{&kSorts[3], &TraceGeometry::bin}};
                break;
        }
    }

    std::vector<const char*> extensions() const override { return {".txt"}; }

    std::string add(const TraceGeometry& trace) override {
        for (Part& part : parts_) part.list.add(trace.*part.point);
        return {};
    }
    std::string finish() override { return {}; }

    void write(std::size_t, const CoordinateHeading& heading, const Take& take) override {
        take("# Survey: " + heading.survey + "\n# Date: " + heading.date +
             "\n# Unit: " + (heading.feet ? "feet" : "metres") + "\n");
        ColumnRecord titles(kWidth);
        titles.text(kLetter, "#");
        std::size_t column = 0;
        const auto title = [&](std::span<const Columns> fields) {
            for (const Columns& field : fields) {
                const std::string_view words = parts_[0].sort->headings[column++];
                titles.text({field.last - static_cast<int>(words.size()) + 1, field.last}, words);
            }
        };
        title(kNumbers);
        title(kPosition);
        title(kHeights);
        take(titles.line() + "\n");
        for (const Part& part : parts_) {
            const bool heights = part.sort->headings[5][0] != '\0';
            for (const std::uint32_t place : part.list.sorted()) {
                const SurveyPoint& point = part.list.points()[place];
                ColumnRecord record(kWidth);
                record.text(kLetter, {&part.sort->letter, 1});
                record.number(kNumbers[0], point.line);
                record.number(kNumbers[1], point.point);
                record.number(kNumbers[2], point.index);
                record.number(kPosition[0], point.x, kDecimals);
                record.number(kPosition[1], point.y, kDecimals);
                if (heights) {
                    record.number(kHeights[0], point.elevation, 1);
                    record.number(kHeights[1], point.depth, 1);
                    record.number(kHeights[2], point.water_depth, 1);
                }
                misfits_ += record.misfits();
                take(record.line() + "\n");
            }
        }
    }

    std::string contents() const override {
        std::string text;
        for (const Part& part : parts_) {
            text += (text.empty() ? "" : ", ") + std::to_string(part.list.points().size()) + " " +
                    part.sort->name;
        }
        return text;
    }
    std::int64_t moved() const override {
        std::int64_t moved = 0;
        for (const Part& part : parts_) moved += part.list.moved();
        return moved;
    }

private:
    struct Part {
        const Sort* sort;
        SurveyPoint TraceGeometry::*point;
        PointList list = {};
    };
    std::vector<Part> parts_;
};

}  // namespace

std::unique_ptr<CoordinateWriter> make_column_writer(PointChoice choice) {
    return std::make_unique<ColumnWriter>(choice);
}

}  // namespace halvern
