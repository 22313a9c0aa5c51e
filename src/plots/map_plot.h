#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "plots/plot.h"

namespace halvern {

struct MapOptions {
    std::string word;  ///< colours the places by its mean; empty: by their numbers of traces
};

/// Where sources, receivers and CDPs are.
class MapPlot final : public Plot {
public:
    enum Kind { kSource, kReceiver, kCdp };
    static constexpr int kKinds = 3;
    struct Place {
        double x = 0, y = 0;
        double value = 0;  ///< mean of the header word, or how many traces there are
    };

    explicit MapPlot(MapOptions options) : options_(std::move(options)) {}

    Fault begin(const LineHeader& line, const TraceHeaderDefinition& definition) override;
    Fault add(const TraceHeaderDefinition& definition, TraceSamples& samples,
              std::int64_t number) override;
    Fault finish() override;
    Fault draw(picture::Canvas& canvas, const std::string& title) const override;

    /// In order of x and y; empty when the headers hold none. After finish().
    const std::vector<Place>& places(Kind kind) const { return places_[kind]; }

private:
    /// The sum of the header word over the traces at one place.
    struct Sum {
        double x = 0, y = 0, value = 0;
        std::int64_t traces = 0;
    };

    double draw_legend(picture::Canvas& canvas, int right) const;  // gives its left edge

    MapOptions options_;
    int word_ = -1, scalar_ = -1;           // header words
    std::pair<int, int> position_[kKinds];  // of x and y, likewise
    std::unordered_map<std::int64_t, Sum> sums_[kKinds];
    std::vector<Place> places_[kKinds];
    std::string unit_;  // of coordinates: "m", "ft", or empty
    std::int64_t traces_ = 0;
};

}  // namespace halvern
