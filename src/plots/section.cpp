#include "plots/section.h"

#include <algorithm>
#include <cmath>

#include "foundation/words.h"
#include "numerics/running_gain.h"

namespace halvern {

namespace {

constexpr const char* kTraceNumber = "trace";
constexpr std::int64_t kMostSamples = 400'000'000;  // that a section holds

/// Not so when there is one value only.
bool varies(const Section::Word& word) {
    return std::ranges::any_of(word.values, [&](double v) { return v != word.values.front(); });
}

/// Keeps the words that tell traces apart: of shots, of a volume, of a line.
void choose_words(Section& section) {
    const auto word = [&](std::string_view name) -> Section::Word* {
        const auto found = std::ranges::find(section.words, name, &Section::Word::name);
        return found == section.words.end() ? nullptr : &*found;
    };
    const auto useful = [&](std::string_view name) {
        const Section::Word* found = word(name);
        return found && varies(*found);
    };
    std::vector<Section::Word> chosen;
    const auto choose = [&](std::string_view name) {
        if (Section::Word* found = word(name)) chosen.push_back(*found);
    };
    if (useful("CHAN")) {
        choose("FFID");
        choose("CHAN");
    } else if (useful("INLINE") || useful("XLINE")) {
        choose("INLINE");
        choose("XLINE");
    } else if (useful("CDPN")) {
        choose("CDPN");
    } else if (useful("FFID")) {
        choose("FFID");
    } else {
        choose(kTraceNumber);
    }
    section.words = std::move(chosen);
}

void even_out(Section& section, const SectionRequest& request) {
    const auto length = static_cast<std::size_t>(section.samples);
    std::vector<double> energies(length);
    for (int i = 0; i < section.traces(); ++i) {
        const std::span<float> trace =
            std::span(section.amplitudes).subspan(static_cast<std::size_t>(i) * length, length);
        if (request.agc_ms > 0) {
            const double half = request.agc_ms / section.interval_ms / 2;
            const auto longest = static_cast<double>(std::max<std::size_t>(length / 2, 1));
            // A window as long as the trace is the longest there is.
            (void)numerics::running_gain(
                trace, static_cast<std::size_t>(std::clamp(half, 1.0, longest)), energies);
        }
        if (!request.balance) continue;
        double squares = 0;
        for (const float a : trace) squares += double{a} * a;
        if (squares <= 0) continue;
        const double factor = std::sqrt(static_cast<double>(length) / squares);
        for (float& a : trace) a = static_cast<float>(a * factor);
    }
}

}  // namespace

SampleWindow samples_in(const TimeWindow& window, double start_ms, double interval_ms,
                        std::size_t samples) {
    if (!(interval_ms > 0)) return {0, samples};
    const auto last = static_cast<double>(samples) - 1;
    const double from = std::max(std::ceil((window.from_ms - start_ms) / interval_ms - 1e-6), 0.0);
    const double to = std::min(std::floor((window.to_ms - start_ms) / interval_ms + 1e-6), last);
    if (!(from <= to)) return {};
    return {static_cast<std::size_t>(from), static_cast<std::size_t>(to - from) + 1};
}

std::string read_section(TraceSource& source, TraceSelection& selection,
                         const SectionRequest& request, Section& section) {
    const TraceHeaderDefinition& definition = source.definition();
    std::vector<std::string> names = request.words;
    if (names.empty()) names = {"FFID", "CHAN", "INLINE", "XLINE", "CDPN", kTraceNumber};
    std::vector<int> indexes;
    for (const std::string& name : names) {
        const int index = definition.find(name);
        const bool number = name == kTraceNumber;
        if (index < 0 && !number && !request.words.empty()) {
            return "the header description has no word '" + name + "'";
        }
        if (index < 0 && !number) continue;
        section.words.push_back({.name = name});
        indexes.push_back(number ? -1 : index);
    }
    section.interval_ms = source.line().sample_interval().ms();
    if (!(section.interval_ms > 0)) section.interval_ms = 1;
    const int delay = definition.find("DELAY");
    SampleWindow window;
    while (selection.next()) {
        if (section.traces() >= request.most_traces) {
            section.cut = true;
            break;
        }
        const std::span<const float> trace = source.floats();
        if (section.numbers.empty()) {
            section.start_ms = definition.get_double(delay);
            window = {0, trace.size()};
            if (request.window) {
                window = samples_in(*request.window, section.start_ms, section.interval_ms,
                                    trace.size());
            }
            if (window.count == 0) {
                return std::string("the traces have no samples") +
                       (request.window ? " in that time window" : "");
            }
            section.start_ms += static_cast<double>(window.first) * section.interval_ms;
            section.samples = static_cast<int>(window.count);
        }
        if (static_cast<std::int64_t>(section.amplitudes.size() + window.count) > kMostSamples) {
            return "that is more than a picture can hold; select fewer traces or a shorter time";
        }
        // A trace that is longer or shorter than the first is cut or filled up.
        for (std::size_t i = window.first; i < window.first + window.count; ++i) {
            const float a = i < trace.size() ? trace[i] : 0.0f;
            section.amplitudes.push_back(std::isfinite(a) ? a : 0.0f);
        }
        section.numbers.push_back(selection.number());
        for (std::size_t i = 0; i < indexes.size(); ++i) {
            section.words[i].values.push_back(indexes[i] < 0
                                                  ? static_cast<double>(selection.number())
                                                  : definition.get_double(indexes[i]));
        }
    }
    if (section.numbers.empty()) return selection.nothing();
    if (request.words.empty()) choose_words(section);
    even_out(section, request);
    return {};
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
