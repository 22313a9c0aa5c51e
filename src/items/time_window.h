#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "flow/parameter.h"
#include "trace/sample_interval.h"

namespace halvern {

/// The sample at a time in ms from the first one, to the nearest; held far beyond every trace.
std::int64_t nearest_sample(double ms, SampleInterval interval);

/// A window in time, as the keys of its two ends give it. The end is text, for it may be empty:
/// that is the trace's own end.
struct TimeWindow {
    double start_ms = 0;
    std::string end;

    /// The two keys, their prompts, and their log lines, which hold "%f" and "%s".
    ParameterList parameters(const char* start_key, const char* end_key, const char* start_log,
                             const char* end_log);

    /// The end in ms; nothing where it is empty.
    std::optional<double> end_ms() const;
    /// Why that is no time, or an empty text.
    static std::string end_fault(const std::string& end);

    /// The samples of a trace of `samples` samples that lie in the window when its zero is at
    /// `reference_ms`: both ends belong to it.
    struct Samples {
        std::size_t first = 0;
        std::size_t count = 0;
    };
    Samples samples_of(double reference_ms, SampleInterval interval, std::size_t samples) const;
};

}  // namespace halvern
