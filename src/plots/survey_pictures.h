#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "picture/canvas.h"
#include "plots/section.h"
#include "plots/section_picture.h"

// Pictures that need one pass over the traces and keep no trace.

namespace halvern {

/// The average amplitude spectrum of the selected traces: the root of their mean power. The ends of
/// each trace are faded over a twentieth of it, so that cutting them off adds no frequencies.
struct Spectrum {
    double nyquist_hz = 0;
    std::vector<double> decibels;  ///< from 0 Hz to Nyquist, evenly; the largest is 0
    std::int64_t traces = 0;
};
[[nodiscard]] std::string read_spectrum(TraceSource& source, TraceSelection& selection,
                                        const std::optional<TimeWindow>& window,
                                        Spectrum& spectrum);
picture::Canvas draw_spectrum(const Spectrum& spectrum, const PictureSize& size,
                              const std::string& title, const std::string& subtitle);

/// Traces a CDP, or a bin of inline and crossline where both vary.
struct Fold {
    struct Bin {
        int x = 0, y = 0;  ///< CDP number and 0, or crossline and inline
        int traces = 0;
    };
    bool is_map = false;
    std::vector<Bin> bins;
    std::int64_t traces = 0;
};
[[nodiscard]] std::string read_fold(TraceSource& source, TraceSelection& selection, Fold& fold);
picture::Canvas draw_fold(const Fold& fold, const PictureSize& size, const std::string& title,
                          const std::string& subtitle);

/// Where sources, receivers and CDPs are.
struct SurveyMap {
    enum Kind { kSource, kReceiver, kCdp };
    static constexpr int kKinds = 3;
    struct Place {
        double x = 0, y = 0;
        double value = 0;  ///< mean of the header word, or how many traces there are
    };
    std::vector<Place> places[kKinds];
    std::string unit;  ///< of coordinates: "m", "ft", or empty
    std::int64_t traces = 0;
};
/// `word` colours the places; empty: the number of traces.
[[nodiscard]] std::string read_map(TraceSource& source, TraceSelection& selection,
                                   const std::string& word, SurveyMap& map);
picture::Canvas draw_map(const SurveyMap& map, const std::string& word, const PictureSize& size,
                         const std::string& title, const std::string& subtitle);

}  // namespace halvern
