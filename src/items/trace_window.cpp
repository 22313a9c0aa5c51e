#include "items/trace_window.h"

#include <algorithm>
#include <cmath>

namespace halvern {

TraceWindow::TraceWindow(const FlowSection& section, LogFlag log)
    : ReshapingFlowItem(FlowItemKind::kTraceWindow, log) {
    Configure(section);
}

ParameterList TraceWindow::Parameters() {
    ParameterList list = window_.parameters("START", "END", "Start time = %f\n", "End time = %s\n");
    list.push_back({.key = "REFERENCE",
                    .format = "%d",
                    .value = Bound{&reference_, kFirstSample},
                    .log = "Times count from = %s\n",
                    .field = {.label = "Reference",
                              .prompt = "From where do the times count?",
                              .help = "First sample: the window lies at the same samples of every "
                                      "trace.\n"
                                      "Absolute time: DELAY, the time of the first sample, is "
                                      "taken off.\n"
                                      "Header word: the time in the word, from the first sample, "
                                      "is added.",
                              .choices = {{"First sample", kFirstSample},
                                          {"Absolute time", kAbsolute},
                                          {"Header word", kHeader}}}});
    list.push_back({.key = "HEADER",
                    .format = "%s",
                    .value = Bound{&word_, "NONE"},
                    .field = {.label = "Header",
                              .prompt = "Header word with the time (in msec.)?",
                              .kind = FieldKind::kHeaderWord,
                              .applies = [this] { return reference_ == kHeader; }}});
    return list;
}

void TraceWindow::LogParameters() {
    LogParameter("START");
    if (window_.end.empty()) {
        Message("End time = the trace's\n");
    } else {
        LogParameter("END");
    }
    LogParameter("REFERENCE");
    if (reference_ == kHeader) Message("Header = %s\n", word_.c_str());
}

void TraceWindow::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (!RequireSampleInterval(*this, line)) return;
    interval_ = line.sample_interval();
    no_time_ = 0;
    delay_.prepare(header);
    if (reference_ < kFirstSample || reference_ > kHeader) {
        Error("The reference must be 0, 1 or 2.  You have entered '%d'.\n", reference_);
        return TerminateJob(kJobError);
    }
    if (const std::string fault = TimeWindow::end_fault(window_.end); !fault.empty()) {
        Error("The end time %s.\n", fault.c_str());
        return TerminateJob(kJobError);
    }
    reference_word_ = -1;
    if (reference_ != kFirstSample) {
        const char* const name = reference_ == kHeader ? word_.c_str() : "DELAY";
        reference_word_ = RequireHeaderWord(*this, header, name);
        if (reference_word_ < 0) return;
    }
    std::int64_t last = line.samples() - 1;
    if (const auto end_ms = window_.end_ms()) {
        last = nearest_sample(*end_ms, interval_);
    } else if (reference_ == kHeader) {
        Error("A window that counts from a header word needs an end time.\n");
        return TerminateJob(kJobError);
    } else if (reference_ == kAbsolute) {  // the end of the first trace
        last += nearest_sample(header.get_double(reference_word_), interval_);
    }
    const std::int64_t samples = last - nearest_sample(window_.start_ms, interval_) + 1;
    if (samples < 1) {
        Error("The window ends before it starts.\n");
        return TerminateJob(kJobError);
    }
    if (Reshape(line, header, samples, interval_)) {
        Message("Samples = %lld\n", static_cast<long long>(samples));
    }
}

int TraceWindow::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    if (reference_ != kAbsolute) delay_.look(*this, header);
    const std::span<const float> trace = samples.floats(header);
    const std::span<float> window = NewSamples(header);
    std::ranges::fill(window, 0.0f);
    const double word = header.get_double(reference_word_);
    if (!std::isfinite(word)) {
        if (!IsRepeating()) ++no_time_;
        FinishTrace(header, {});
        return kPassOn;
    }
    const double reference_ms = reference_ == kAbsolute ? -word : word;
    const std::int64_t first = nearest_sample(reference_ms + window_.start_ms, interval_);
    const auto length = static_cast<std::int64_t>(trace.size());
    const std::int64_t begin = std::clamp<std::int64_t>(first, 0, length);
    const std::int64_t end =
        std::clamp<std::int64_t>(first + static_cast<std::int64_t>(window.size()), begin, length);
    const auto part =
        trace.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    if (!part.empty()) {
        std::ranges::copy(part, window.subspan(static_cast<std::size_t>(begin - first)).begin());
    }
    FinishTrace(header, {.stored = samples.stored_count() - first,
                         .start = StartSample(header) - first,
                         .time = first * interval_.internal()});
    return kPassOn;
}

void TraceWindow::EndRun() {
    if (no_time_ > 0) {
        Warning("%lld traces have no finite time in '%s': their samples are zero.\n",
                static_cast<long long>(no_time_), word_.c_str());
    }
    ReshapingFlowItem::EndRun();
}

}  // namespace halvern
