#include "items/linear_moveout.h"

#include <algorithm>

namespace halvern {

namespace {
const OffsetTableWords kWords{.pairs = "offset/velocity",
                              .entry = "Offset/Velocity",
                              .log_title = "Pair# -OFFSET- --VEL---\n",
                              .prompt = "Enter the offset/velocity pairs.",
                              .dialog = "LMO",
                              .already_up = "LMO Interface is already up.",
                              .nonzero = true};
const RowTable<OffsetRow> kTable({.key = "OFFSET_VEL",
                                  .entry = "Offset/Velocity",
                                  .row = "offset/velocity pair",
                                  .window = {0, 1},
                                  .quoted = {0, 1},
                                  .checked = {1, 0}},
                                 {{{.title = "Offset", .label = "Offset"}, &OffsetRow::offset},
                                  {{.title = "Velocity",
                                    .label = "Velocity",
                                    .unit = "offset units a second",
                                    .least = 100,
                                    .most = 30000},
                                   &OffsetRow::value}});
}  // namespace

LinearMoveout::LinearMoveout(const FlowSection& section, LogFlag log)
    : OffsetTableItem(FlowItemKind::kLinearMoveout, log, kWords, kTable) {
    Configure(section);
}

ParameterList LinearMoveout::Parameters() {
    return {
        {.key = "TIMESHIFT",
         .format = "%d",
         .value = Bound{&time_shift_ms_, 0},
         .log = "User Time Shift = %d\n",
         .field = {.label = "Timeshift",
                   .prompt = "Time shift (in msec.)?",
                   .help = "Enter the timeshift to apply before LMO."}},
        TableParameter(),
        FileParameter(),
    };
}

int LinearMoveout::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    const auto length = static_cast<double>(trace.size());
    const double offset = OffsetOf(header);
    // At the source nothing moves out, even where the velocity passes through zero on its way from
    // one side of a split spread to the other.
    const double moveout_s = offset == 0 ? 0 : offset / TableValue(offset);
    const double shift = NearestSample(moveout_s * 1000 - time_shift_ms_);
    if (!(shift >= -length && shift <= length)) {  // an offset that is no number, too
        std::ranges::fill(trace, 0.0f);
    } else if (shift > 0) {
        const auto earlier = static_cast<std::size_t>(shift);
        std::ranges::copy(trace.subspan(earlier), trace.begin());
        std::ranges::fill(trace.last(earlier), 0.0f);
    } else if (shift < 0) {
        // Sample j takes sample j - m as it is by then: the first m samples over and over. What
        // is already repeated is a whole number of periods, so it can be copied on in one piece.
        const auto period = static_cast<std::size_t>(-shift);
        for (std::size_t done = period; done < trace.size(); done *= 2) {
            const std::size_t count = std::min(done, trace.size() - done);
            std::ranges::copy(trace.first(count), trace.subspan(done).begin());
        }
        std::ranges::fill(trace.first(period), 0.0f);
    }
    samples.set_floats(trace);
    return kPassOn;
}

}  // namespace halvern
