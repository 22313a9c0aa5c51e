#pragma once

#include <cstddef>

#include "trace/header_definition.h"
#include "trace/line_header.h"

namespace halvern {

/// A part of the time axis, ms; both ends belong to it.
struct TimeWindow {
    double from_ms = 0;
    double to_ms = 1e9;
};

/// Where the samples of a line's traces are in time.
class TimeAxis {
public:
    TimeAxis() = default;
    TimeAxis(const LineHeader& line, const TraceHeaderDefinition& definition);

    double interval_ms() const { return interval_ms_; }  ///< 0: the line gives none

    /// Time of the first sample of the trace whose header is attached: its DELAY. In SEG-Y of
    /// revision 1 and later the scalar of its times is applied, when it is one that the standard
    /// has and no header word lies over it that is in use.
    double start_ms(const TraceHeaderDefinition& definition) const;

    struct Samples {
        std::size_t first = 0, count = 0;
    };
    /// Those of a trace of `samples` that begins at `start_ms` which lie in a window.
    Samples in(const TimeWindow& window, double start_ms, std::size_t samples) const;

private:
    double interval_ms_ = 0;
    int delay_ = -1;  // header word
    bool has_scalar_ = false;
};

}  // namespace halvern
