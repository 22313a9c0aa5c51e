#pragma once

#include <cstdint>
#include <span>
#include <utility>

#include "flow/flow_item.h"

namespace halvern {

// What many items ask of the line and its traces.

/// Index of a header word that the item cannot do without. Where the definition lacks it the job
/// ends with an error naming it, and -1 comes back.
int RequireHeaderWord(const FlowItem& item, const TraceHeaderDefinition& header, const char* name);

/// Whether the line has a sample interval; where it has none the job ends with an error.
bool RequireSampleInterval(const FlowItem& item, const LineHeader& line);

/// The line's sample interval for items that count in whole milliseconds: the fraction is dropped,
/// so 2500 microseconds count as 2, with a warning. Below 1 ms such an item cannot work: the job
/// ends with an error, and 0 comes back.
int RequireWholeMilliseconds(const FlowItem& item, const LineHeader& line);

/// Lets through once a run what would be said of trace after trace: PrepareRun assigns a new one.
class Once {
public:
    bool operator()() { return !std::exchange(done_, true); }

private:
    bool done_ = false;
};

/// Warns once a run of traces in which a header word, where it is defined, says that the item's
/// numbers may mean something else than the user thinks.
class HeaderWarning {
public:
    enum Of {
        kDelay,             ///< DELAY, unless 0: the item's times count from the first sample
        kCoordinateScalar,  ///< COORSCAL, unless 0 or 1: coordinates are used as they are
    };
    explicit HeaderWarning(Of of) : of_(of) {}

    /// At the start of a run.
    void prepare(const TraceHeaderDefinition& header);
    void look(const FlowItem& item, const TraceHeaderDefinition& header) {
        const int value = header.get_int(word_);
        if (value != 0 && value != (of_ == kDelay ? 0 : 1) && once_()) warn(item, value);
    }

private:
    void warn(const FlowItem& item, int value) const;

    Of of_;
    int word_ = -1;
    Once once_;
};

/// Counts the shortened traces that an item left with live samples after their stored ones, which
/// an output writes as zeros.
class ShortenedTraces {
public:
    /// `trace` as the item leaves it.
    void look(const TraceSamples& samples, std::span<const float> trace) {
        if (samples.stored_count() < samples.nominal_count()) count(samples, trace);
    }
    /// At the end: one warning, if there were any.
    void report(const FlowItem& item) const;

private:
    void count(const TraceSamples& samples, std::span<const float> trace);

    std::int64_t traces_ = 0;
};

}  // namespace halvern
