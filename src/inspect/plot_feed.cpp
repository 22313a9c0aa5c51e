#include "inspect/plot_feed.h"

namespace halvern {

Result<bool> feed_plot(TraceSource& source, TraceSelection& selection, Plot& plot) {
    if (Fault fault = plot.begin(source.line(), source.definition())) return fault;
    source.set_samples_wanted(plot.wants_samples());
    bool any = false, more = false;
    while (!more && selection.next()) {
        if (plot.full()) {
            more = true;
        } else if (Fault fault =
                       plot.add(source.definition(), source.samples(), selection.number())) {
            return fault;
        }
        any = true;
    }
    if (!any) return Fault(selection.nothing());
    if (Fault fault = plot.finish()) return fault;
    return more;
}

}  // namespace halvern
