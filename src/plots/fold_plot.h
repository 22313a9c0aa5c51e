#pragma once

#include <unordered_map>
#include <vector>

#include "plots/plot.h"

namespace halvern {

/// Traces a CDP, or a bin of inline and crossline where both vary. A trace whose FOLD is set counts
/// as that many: a stacked line shows the fold that it was stacked with.
class FoldPlot final : public Plot {
public:
    struct Bin {
        int x = 0, y = 0;  ///< CDP number and 0, or crossline and inline
        std::int64_t traces = 0;
    };

    Fault begin(const LineHeader& line, const TraceHeaderDefinition& definition) override;
    Fault add(const TraceHeaderDefinition& definition, TraceSamples& samples,
              std::int64_t number) override;
    Fault finish() override;
    Fault draw(picture::Canvas& canvas, const std::string& title) const override;

    bool is_map() const { return is_map_; }
    const std::vector<Bin>& bins() const { return bins_; }  ///< after finish(), in no order

private:
    using Counts = std::unordered_map<std::int64_t, std::int64_t>;

    int cdp_ = -1, inline_ = -1, crossline_ = -1, fold_ = -1;  // header words
    Counts by_cdp_, by_bin_;
    std::int64_t traces_ = 0;   // that were added
    std::int64_t stacked_ = 0;  // that are in them
    bool is_map_ = false;
    std::vector<Bin> bins_;
};

}  // namespace halvern
