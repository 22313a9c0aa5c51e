#include "plots/section_plot.h"

#include <algorithm>
#include <cmath>

#include "numerics/running_gain.h"

namespace halvern {

namespace {

constexpr const char* kTraceNumber = "trace";
constexpr std::int64_t kMostSamples = 400'000'000;  // that a section holds

bool varies(const Section::Word& word) {
    return std::ranges::any_of(word.values, [&](double v) { return v != word.values.front(); });
}

}  // namespace

Fault SectionPlot::begin(const LineHeader& line, const TraceHeaderDefinition& definition) {
    section_ = {};
    indexes_.clear();
    axis_ = TimeAxis(line, definition);
    fold_ = definition.find("FOLD");
    stacked_ = false;
    section_.interval_ms = axis_.interval_ms();
    if (section_.interval_ms == 0 && (options_.window || options_.agc_ms > 0)) {
        return Fault("there is no sample interval, which times need");
    }
    std::vector<std::string> names = options_.words;
    if (names.empty()) names = {"FFID", "CHAN", "INLINE", "XLINE", "CDPN", kTraceNumber};
    for (const std::string& name : names) {
        const int index = definition.find(name);
        const bool number = name == kTraceNumber;
        if (index < 0 && !number) {
            if (options_.words.empty()) continue;
            return Fault("the header description has no word '" + name + "'");
        }
        section_.words.push_back({.name = name, .values = {}});
        indexes_.push_back(number ? -1 : index);
    }
    return {};
}

Fault SectionPlot::add(const TraceHeaderDefinition& definition, TraceSamples& samples,
                       std::int64_t number) {
    const std::span<const float> trace = samples.floats(definition);
    const double start_ms = axis_.start_ms(definition);
    if (section_.numbers.empty()) {
        const TimeAxis::Samples part =
            axis_.in(options_.window.value_or(TimeWindow{start_ms}), start_ms, trace.size());
        if (part.count == 0) {
            return Fault(std::string("the traces have no samples") +
                         (options_.window ? " in that time window" : ""));
        }
        section_.start_ms = start_ms + static_cast<double>(part.first) * section_.interval_ms;
        section_.samples = static_cast<int>(part.count);
    }
    if (static_cast<std::int64_t>(section_.amplitudes.size()) + section_.samples > kMostSamples) {
        return Fault("that is more than a picture can hold; select fewer traces or a shorter time");
    }
    // A trace that begins later or ends earlier than the section is filled up with zeros.
    const double later =
        section_.interval_ms > 0 ? (section_.start_ms - start_ms) / section_.interval_ms : 0;
    const auto first = static_cast<std::int64_t>(std::lround(std::clamp(later, -1e9, 1e9)));
    for (std::int64_t i = first; i < first + section_.samples; ++i) {
        const bool there = i >= 0 && i < static_cast<std::int64_t>(trace.size());
        const float a = there ? trace[static_cast<std::size_t>(i)] : 0.0f;
        section_.amplitudes.push_back(std::isfinite(a) ? a : 0.0f);
    }
    section_.numbers.push_back(number);
    stacked_ = stacked_ || definition.get_int(fold_) > 1;
    for (std::size_t i = 0; i < indexes_.size(); ++i) {
        section_.words[i].values.push_back(indexes_[i] < 0 ? static_cast<double>(number)
                                                           : definition.get_double(indexes_[i]));
    }
    return {};
}

Fault SectionPlot::finish() {
    if (section_.numbers.empty()) return Fault("there is no trace");
    if (options_.words.empty()) choose_words();
    even_out();
    set_look(look_);
    return {};
}

void SectionPlot::set_look(const SectionLook& look) {
    look_ = look;
    double scale = look.scale;
    if (!(scale > 0)) scale = amplitude_percentile(section_, look.percentile);
    if (!(scale > 0)) scale = 1;
    // Within what the drawing can divide by and by which.
    full_scale_ = std::clamp(scale / look.gain, 1e-60, 1e60);
}

/// Keeps the words that tell traces apart: of shots, of a volume, of a line.
void SectionPlot::choose_words() {
    const auto word = [&](std::string_view name) {
        return std::ranges::find(section_.words, name, &Section::Word::name);
    };
    const auto useful = [&](std::string_view name) {
        const auto found = word(name);
        return found != section_.words.end() && varies(*found);
    };
    std::vector<const char*> names{kTraceNumber};
    // A stacked trace has the file and channel of one of those that are in it.
    if (!stacked_ && useful("CHAN")) {
        names = {"FFID", "CHAN"};
    } else if (stacked_ && useful("CDPN") && !(useful("INLINE") && useful("XLINE"))) {
        names = {"CDPN"};
    } else if (useful("INLINE") || useful("XLINE")) {
        names = {"INLINE", "XLINE"};
    } else if (useful("CDPN")) {
        names = {"CDPN"};
    } else if (useful("FFID")) {
        names = {"FFID"};
    }
    std::vector<Section::Word> chosen;
    for (const char* name : names) {
        if (const auto found = word(name); found != section_.words.end()) chosen.push_back(*found);
    }
    section_.words = std::move(chosen);
}

void SectionPlot::even_out() {
    const auto length = static_cast<std::size_t>(section_.samples);
    std::vector<double> energies(length);
    for (int i = 0; i < section_.traces(); ++i) {
        const std::span<float> trace =
            std::span(section_.amplitudes).subspan(static_cast<std::size_t>(i) * length, length);
        if (options_.agc_ms > 0) {
            const double half = options_.agc_ms / section_.interval_ms / 2;
            const auto longest = static_cast<double>(std::max<std::size_t>(length / 2, 1));
            // A window as long as the trace is the longest there is.
            (void)numerics::running_gain(
                trace, static_cast<std::size_t>(std::clamp(half, 1.0, longest)), energies);
        }
        if (!options_.balance) continue;
        double squares = 0;
        for (const float a : trace) squares += double{a} * a;
        if (squares <= 0) continue;
        const double factor = std::sqrt(static_cast<double>(length) / squares);
        for (float& a : trace) a = static_cast<float>(a * factor);
    }
}

double amplitude_percentile(const Section& section, double percent) {
    constexpr std::size_t kMostLookedAt = 2'000'000;
    const std::size_t step = section.amplitudes.size() / kMostLookedAt + 1;
    std::vector<float> magnitudes;
    for (std::size_t i = 0; i < section.amplitudes.size(); i += step) {
        if (section.amplitudes[i] != 0) magnitudes.push_back(std::fabs(section.amplitudes[i]));
    }
    if (magnitudes.empty()) return 0;
    const double part = std::clamp(percent / 100, 0.0, 1.0);
    const auto place =
        magnitudes.begin() + std::lround(part * static_cast<double>(magnitudes.size() - 1));
    std::ranges::nth_element(magnitudes, place);
    return *place;
}

}  // namespace halvern
