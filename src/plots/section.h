#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "inspect/trace_selection.h"

namespace halvern {

/// Traces side by side, as a picture shows them.
struct Section {
    struct Word {
        std::string name;
        std::vector<double> values;  ///< [traces]
    };

    int samples = 0;  ///< of every trace
    double interval_ms = 0;
    double start_ms = 0;                ///< time of the first sample
    std::vector<float> amplitudes;      ///< [traces][samples]; finite
    std::vector<std::int64_t> numbers;  ///< [traces], in the file, from 1
    std::vector<Word> words;            ///< to be shown above the traces
    bool cut = false;                   ///< more traces were selected than are here

    int traces() const { return static_cast<int>(numbers.size()); }
    std::span<const float> trace(int index) const {
        return std::span(amplitudes)
            .subspan(static_cast<std::size_t>(index) * static_cast<std::size_t>(samples),
                     static_cast<std::size_t>(samples));
    }
    double end_ms() const { return start_ms + (samples - 1) * interval_ms; }
};

/// A part of the time axis, ms; both ends belong to it.
struct TimeWindow {
    double from_ms = 0;
    double to_ms = 1e9;
};

struct SectionRequest {
    std::vector<std::string> words;  ///< "trace": the number in the file; empty: chosen by what
                                     ///< the headers hold
    std::optional<TimeWindow> window;
    std::int64_t most_traces = 1000;
    double agc_ms = 0;     ///< length of the gain's window; 0: none
    bool balance = false;  ///< every trace to the same root mean square
};

/// Reads the selected traces. What is wrong, or an empty text.
[[nodiscard]] std::string read_section(TraceSource& source, TraceSelection& selection,
                                       const SectionRequest& request, Section& section);

/// The samples of a trace that lie in a window: the first, and how many.
struct SampleWindow {
    std::size_t first = 0;
    std::size_t count = 0;
};
SampleWindow samples_in(const TimeWindow& window, double start_ms, double interval_ms,
                        std::size_t samples);

/// The magnitude that `percent` of the samples that are not zero do not pass; 0 when all are zero.
double amplitude_percentile(const Section& section, double percent);

}  // namespace halvern
