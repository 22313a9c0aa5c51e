#include "items/mute.h"

#include <algorithm>

namespace halvern {

namespace {
const OffsetTableWords kWords{.pairs = "offset/time",
                              .entry = "Offset/Time",
                              .log_title = "Pair# -OFFSET- --TIME--\n",
                              .prompt = "Enter the offset/time pairs.",
                              .dialog = "Mute",
                              .already_up = "MUTE Interface is already up.",
                              .nonzero = false};
const RowTable<OffsetRow> kTable(
    {.key = "OFFSET_TIME",
     .entry = "Offset/Time",
     .row = "offset/time pair",
     .window = {0, 1},
     .quoted = {1, 0},
     .checked = {1, 0}},
    {{{.title = "Offset", .label = "Offset"}, &OffsetRow::offset},
     {{.title = "Time", .label = "Time", .unit = "ms", .least = 10, .most = 60000},
      &OffsetRow::value}});
}  // namespace

Mute::Mute(const FlowSection& section, LogFlag log)
    : OffsetTableItem(FlowItemKind::kMute, log, kWords, kTable) {
    Configure(section);
}

int Mute::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    // Times before the trace mute nothing of it, times after its end all of it.
    const double end = NearestSample(TableValue(OffsetOf(header)));
    const double muted = end > 0 ? std::min(end, static_cast<double>(trace.size())) : 0;
    std::ranges::fill(trace.first(static_cast<std::size_t>(muted)), 0.0f);
    samples.set_floats(trace);
    return kPassOn;
}

}  // namespace halvern
