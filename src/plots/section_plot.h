#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "plots/plot.h"
#include "plots/time_axis.h"

namespace halvern {

/// Traces side by side.
struct Section {
    struct Word {
        std::string name;
        std::vector<double> values;  ///< [traces]
    };

    int samples = 0;                    ///< of every trace
    double interval_ms = 0;             ///< 0: not known; the axis then counts samples from 0
    double start_ms = 0;                ///< time of the first sample
    std::vector<float> amplitudes;      ///< [traces][samples]; finite
    std::vector<std::int64_t> numbers;  ///< [traces], in the data, from 1
    std::vector<Word> words;            ///< to be shown above the traces

    int traces() const { return static_cast<int>(numbers.size()); }
    std::span<const float> trace(int index) const {
        return std::span(amplitudes)
            .subspan(static_cast<std::size_t>(index) * static_cast<std::size_t>(samples),
                     static_cast<std::size_t>(samples));
    }
};

/// The magnitude that `percent` of the samples that are not zero do not pass; 0 when all are zero.
double amplitude_percentile(const Section& section, double percent);

/// What a section takes of traces.
struct SectionOptions {
    std::vector<std::string> words;  ///< above the traces; "trace": the number in the data; empty:
                                     ///< chosen by what the headers hold
    std::optional<TimeWindow> window;
    std::int64_t most_traces = 1000;
    double agc_ms = 0;     ///< length of the gain's window; 0: none
    bool balance = false;  ///< every trace to the same root mean square
};

enum class SectionStyle { kGrey, kRedBlue, kWiggle };

/// How it shows them; may change between two drawings.
struct SectionLook {
    SectionStyle style = SectionStyle::kGrey;
    double scale = 0;        ///< amplitude at full scale; 0: by the percentile
    double percentile = 98;  ///< percent of the samples other than zero within full scale
    double gain = 1;
};

/// A gather or section: time downward, traces from left to right, header words above them. Each
/// trace is placed in time by its own DELAY.
class SectionPlot final : public Plot {
public:
    explicit SectionPlot(SectionOptions options, const SectionLook& look = {})
        : options_(std::move(options)), look_(look) {}

    Fault begin(const LineHeader& line, const TraceHeaderDefinition& definition) override;
    Fault add(const TraceHeaderDefinition& definition, TraceSamples& samples,
              std::int64_t number) override;
    Fault finish() override;
    bool wants_samples() const override { return true; }
    bool full() const override { return section_.traces() >= options_.most_traces; }
    Fault draw(picture::Canvas& canvas, const std::string& title) const override;
    std::string advice(const picture::Canvas& canvas) const override;

    /// After finish(), without the traces being added again.
    void set_look(const SectionLook& look);
    const Section& section() const { return section_; }
    /// The amplitude of the darkest colour, or of a swing to the next trace.
    double full_scale() const { return full_scale_; }
    /// Where the traces are in the picture: the columns of trace i of n begin at x + width i / n,
    /// the first and last sample are at the top and bottom edge.
    picture::Rect area(const picture::Canvas& canvas) const;

private:
    bool has_colour_bar() const { return look_.style != SectionStyle::kWiggle; }
    std::string caption(int columns) const;
    void choose_words();
    void even_out();

    SectionOptions options_;
    SectionLook look_;
    double full_scale_ = 1;
    Section section_;
    TimeAxis axis_;
    std::vector<int> indexes_;  // of the section's words in the definition; -1: trace number
    int fold_ = -1;             // header word
    bool stacked_ = false;      // some trace's fold is above 1
};

}  // namespace halvern
