#include "flow/item_checks.h"

#include <algorithm>
#include <cstdlib>

namespace halvern {

int RequireHeaderWord(const FlowItem& item, const TraceHeaderDefinition& header, const char* name) {
    const int index = header.find(name);
    if (index < 0) {
        item.Error(
            "Cannot read header '%s' from the trace header definition.\n"
            "Add it to the trace header definition and re-run.\n",
            name);
        TerminateJob(kJobError);
    }
    return index;
}

bool RequireSampleInterval(const FlowItem& item, const LineHeader& line) {
    if (line.sample_interval()) return true;
    item.Error("The line has no sample interval.\n");
    TerminateJob(kJobError);
    return false;
}

int RequireWholeMilliseconds(const FlowItem& item, const LineHeader& line) {
    const SampleInterval interval = line.sample_interval();
    if (interval.whole_ms() > 0) {
        if (!interval.is_whole_ms()) {
            item.Warning(
                "The sample interval is %.3f ms.  It is taken as %d ms: this item counts in whole "
                "milliseconds.\n",
                interval.ms(), interval.whole_ms());
        }
        return interval.whole_ms();
    }
    item.Error(
        "The sample interval must be at least 1 millisecond.  The line has '%d' microseconds.\n",
        interval.us());
    TerminateJob(kJobError);
    return 0;
}

void HeaderWarning::prepare(const TraceHeaderDefinition& header) {
    word_ = header.find(of_ == kDelay ? "DELAY" : "COORSCAL");
    once_ = {};
}

void HeaderWarning::warn(const FlowItem& item, int value) const {
    if (of_ == kDelay) {
        item.Warning(
            "A trace has a DELAY of %d ms.  Times count from the first sample of a trace, not from "
            "time 0.\n",
            value);
    } else {
        item.Warning(
            "A trace has the coordinate scalar %d (COORSCAL).  Coordinates are used and written as "
            "they are; other readers %s them by %lld.\n",
            value, value < 0 ? "divide" : "multiply", std::llabs(value));
    }
}

void ShortenedTraces::count(const TraceSamples& samples, std::span<const float> trace) {
    const auto stored = static_cast<std::size_t>(std::max(samples.stored_count(), 0));
    if (stored >= trace.size()) return;
    traces_ += std::ranges::any_of(trace.subspan(stored), [](float s) { return s != 0; });
}

void ShortenedTraces::report(const FlowItem& item) const {
    if (traces_ == 0) return;
    item.Warning(
        "Shortened traces with live samples after their stored ones, which an output writes as "
        "zeros = %lld\n",
        static_cast<long long>(traces_));
}

}  // namespace halvern
