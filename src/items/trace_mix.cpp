#include "items/trace_mix.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "flow/item_checks.h"
#include "foundation/words.h"

namespace halvern {

namespace {
constexpr const char* kNone = "NONE";
constexpr int kMostTraces = 999;
constexpr int kShortenedTrace = 101;  // TRACEID of a trace that stores fewer samples than the line
}  // namespace

TraceMix::TraceMix(const FlowSection& section, LogFlag log)
    : BufferingFlowItem(FlowItemKind::kTraceMix, log) {
    Configure(section);
}

ParameterList TraceMix::Parameters() {
    const auto mean = [this] { return method_ == kMean; };
    return {
        {.key = "TRACES",
         .format = "%d",
         .value = Bound{&traces_, 3},
         .log = "Traces in the mix = %d\n",
         .field = {.label = "Traces",
                   .prompt = "Number of traces to mix (odd)?",
                   .help = "Each trace is mixed with as many before it as after it."}},
        {.key = "METHOD",
         .format = "%d",
         .value = Bound{&method_, kMean},
         .log = "Method = %s\n",
         .field = {.label = "Method",
                   .prompt = "Mean or median?",
                   .help = "Mean: the weighted mean of the samples at each time.\n"
                           "Median: the middle one of them, which single strong traces do not "
                           "change.",
                   .choices = {{"Weighted mean", kMean}, {"Median", kMedian}}}},
        {.key = "WEIGHTING",
         .format = "%d",
         .value = Bound{&weighting_, kSame},
         .log = "Weights = %s\n",
         .field = {.label = "Weighting",
                   .prompt = "Weights of the traces?",
                   .help = "Triangle: 1,2,1 for three traces, 1,2,3,2,1 for five.",
                   .choices = {{"Equal", kSame}, {"Triangle", kTriangle}, {"Entered", kTyped}},
                   .applies = mean}},
        {.key = "WEIGHTS",
         .format = "%s",
         .value = Bound{&typed_, "1,2,1"},
         .field = {.label = "Weights",
                   .prompt = "Weights, one a trace, separated by commas?",
                   .applies = [this] { return method_ == kMean && weighting_ == kTyped; }}},
        {.key = "HEADER",
         .format = "%s",
         .value = Bound{&word_, kNone},
         .log = "Ensemble header = %s\n",
         .field = {.label = "Header",
                   .prompt = "Header word that an ensemble shares?",
                   .help = "Traces are mixed only while this word stays the same, as FFID does "
                           "within a record.  NONE: all traces are one ensemble.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "LIVEONLY",
         .format = "%d",
         .value = Bound{&live_only_, 1},
         .field = {.label = "LiveOnly",
                   .prompt = "Leave out samples that are zero?",
                   .help = "YES: dead traces and muted samples do not count in the mean.\n"
                           "NO : they count as zeros.",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "FILLDEAD",
         .format = "%d",
         .value = Bound{&fill_dead_, 0},
         .field = {.label = "FillDead",
                   .prompt = "Fill samples that are zero from the neighbours?",
                   .help = "NO : a sample that is zero stays zero, so that mutes and dead traces "
                           "stay.\n"
                           "YES: it becomes the mix of its neighbours.",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
    };
}

void TraceMix::LogParameters() {
    for (const char* key : {"TRACES", "METHOD"}) LogParameter(key);
    if (method_ == kMean && weighting_ == kTyped) {
        Message("Weights = %s\n", typed_.c_str());
    } else if (method_ == kMean) {
        LogParameter("WEIGHTING");
    }
    LogParameter("HEADER");
    Message("Samples that are zero %s.\n", live_only_ == 1 ? "do not count" : "count");
    Message("Samples that are zero %s.\n", fill_dead_ == 1 ? "are filled" : "stay zero");
}

bool TraceMix::MakeWeights() {
    const auto count = static_cast<std::size_t>(traces_);
    weights_.assign(count, 1.0);
    if (weighting_ == kTriangle) {
        for (std::size_t i = 0; i < count; ++i) {
            weights_[i] = static_cast<double>(std::min(i, count - 1 - i) + 1);
        }
    }
    if (weighting_ != kTyped) return true;
    const std::vector<std::string> entries = split_list(typed_);
    if (entries.size() != count) {
        Error("There are %d weights for %d traces.  Enter one for each.\n",
              static_cast<int>(entries.size()), traces_);
        return false;
    }
    for (std::size_t i = 0; i < count; ++i) {
        char* behind = nullptr;
        weights_[i] = std::strtod(entries[i].c_str(), &behind);
        if (entries[i].empty() || *behind != '\0' || !std::isfinite(weights_[i])) {
            Error("The weight '%s' is not a number.\n", entries[i].c_str());
            return false;
        }
    }
    if (std::accumulate(weights_.begin(), weights_.end(), 0.0) == 0) {
        Error("The weights sum up to zero, so that no mean can be made.\n");
        return false;
    }
    return true;
}

void TraceMix::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (traces_ < 1 || traces_ > kMostTraces || traces_ % 2 == 0) {
        Error("The number of traces must be odd, from 1 to %d.  You have entered '%d'.\n",
              kMostTraces, traces_);
        return TerminateJob(kJobError);
    }
    if (method_ < kMean || method_ > kMedian || weighting_ < kSame || weighting_ > kTyped) {
        Error("METHOD must be 0 or 1 and WEIGHTING 0, 1 or 2.  You have entered '%d' and '%d'.\n",
              method_, weighting_);
        return TerminateJob(kJobError);
    }
    if (!MakeWeights()) return TerminateJob(kJobError);
    key_word_ = -1;
    if (word_ != kNone) {
        key_word_ = RequireHeaderWord(*this, header, word_.c_str());
        if (key_word_ < 0) return;
    }
    trace_id_ = header.find("TRACEID");
    total_samples_ = header.find("TOTSAMP");
    const auto samples = static_cast<std::size_t>(std::max(line.samples(), 0));
    slots_.resize(static_cast<std::size_t>(traces_));
    for (Slot& each : slots_) each.samples.assign(samples, 0.0f);
    sums_.assign(samples, 0.0);
    norms_.assign(samples, 0.0);
    column_.assign(static_cast<std::size_t>(traces_), 0.0f);
    mixed_.set_floats(std::vector<float>(samples));
    definition_ = &header;
    line_ = line;
    received_ = sent_ = 0;
}

void TraceMix::ReceiveTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const double key = header.get_double(key_word_);
    if (received_ > 0 && key != key_) EndEnsemble();
    key_ = key;
    const std::span<const float> trace = samples.floats(header);
    Slot& taken = slot(received_++);
    std::copy_n(header.image(), kTraceHeaderBytes, taken.image.begin());
    const std::size_t count = std::min(trace.size(), taken.samples.size());
    std::ranges::fill(std::ranges::copy_n(trace.begin(), static_cast<std::ptrdiff_t>(count),
                                          taken.samples.begin())
                          .out,
                      taken.samples.end(), 0.0f);
    if (received_ - sent_ > traces_ / 2) SendMiddle(sent_++);
}

void TraceMix::EndEnsemble() {
    while (sent_ < received_) SendMiddle(sent_++);
    received_ = sent_ = 0;
}

// Sends the trace of that number in its ensemble; its neighbours are in the slots, as far as there
// are any.
void TraceMix::SendMiddle(std::int64_t middle) {
    const std::int64_t half = traces_ / 2;
    const std::int64_t first = std::max<std::int64_t>(middle - half, 0);
    const std::int64_t last = std::min(middle + half, received_ - 1);
    if (method_ == kMedian) {
        Median(first, last);
    } else {
        Mean(middle, first, last);
    }
    Slot& own = slot(middle);
    const std::span<float> mixed = mixed_.floats(*definition_);
    for (std::size_t i = 0; i < mixed.size(); ++i) {
        const bool stays = own.samples[i] == 0 && fill_dead_ != 1;
        mixed[i] = stays ? 0.0f : static_cast<float>(sums_[i]);
    }
    mixed_.set_floats(mixed);
    std::byte* const attached = definition_->image();
    // A copy: the slot is still a neighbour of later traces, whose header must stay as it came.
    std::array<std::byte, kTraceHeaderBytes> image = own.image;
    definition_->attach(image.data());
    if (fill_dead_ == 1 && definition_->get_int(trace_id_) == kShortenedTrace) {
        definition_->set_double(total_samples_, static_cast<double>(mixed.size()));
    }
    SendTrace(line_, *definition_, mixed_);
    definition_->attach(attached);
}

void TraceMix::Mean(std::int64_t middle, std::int64_t first, std::int64_t last) {
    std::ranges::fill(sums_, 0.0);
    std::ranges::fill(norms_, 0.0);
    for (std::int64_t number = first; number <= last; ++number) {
        const double weight = weights_[static_cast<std::size_t>(number - middle + traces_ / 2)];
        const std::vector<float>& trace = slot(number).samples;
        for (std::size_t i = 0; i < sums_.size(); ++i) {
            const bool counts = trace[i] != 0 || live_only_ != 1;
            sums_[i] += weight * trace[i];
            norms_[i] += counts ? weight : 0;
        }
    }
    for (std::size_t i = 0; i < sums_.size(); ++i) {
        sums_[i] = norms_[i] == 0 ? 0 : sums_[i] / norms_[i];
    }
}

void TraceMix::Median(std::int64_t first, std::int64_t last) {
    for (std::size_t i = 0; i < sums_.size(); ++i) {
        std::size_t count = 0;
        bool finite = true;
        for (std::int64_t number = first; number <= last; ++number) {
            const float sample = slot(number).samples[i];
            finite = finite && !std::isnan(sample);
            if (sample != 0 || live_only_ != 1) column_[count++] = sample;
        }
        sums_[i] = 0;
        if (count == 0) continue;
        if (!finite) {  // NaN has no place in an order
            sums_[i] = std::numeric_limits<double>::quiet_NaN();
            continue;
        }
        const auto middle = column_.begin() + static_cast<std::ptrdiff_t>(count / 2);
        const auto end = column_.begin() + static_cast<std::ptrdiff_t>(count);
        std::nth_element(column_.begin(), middle, end);
        sums_[i] = *middle;
        if (count % 2 == 0) {
            sums_[i] = (sums_[i] + *std::max_element(column_.begin(), middle)) / 2;
        }
    }
}

int TraceMix::FlushAtEnd() {
    EndEnsemble();
    return 1;
}

void TraceMix::EndRun() {
    slots_ = {};
    sums_ = {};
    norms_ = {};
    column_ = {};
    mixed_ = {};
    definition_ = nullptr;
}

}  // namespace halvern
