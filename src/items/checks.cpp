#include "items/checks.h"

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
    if (interval.whole_ms() > 0) return interval.whole_ms();
    item.Error(
        "The sample interval must be at least 1 millisecond.  The line has '%d' microseconds.\n",
        interval.us());
    TerminateJob(kJobError);
    return 0;
}

}  // namespace halvern
