#pragma once

#include "inspect/trace_selection.h"
#include "inspect/trace_source.h"
#include "plots/plot.h"

namespace halvern {

/// Gives `plot` the selected traces of `source`, so that it can be drawn. Whether more were
/// selected than it shows, or why there is nothing to see.
Result<bool> feed_plot(TraceSource& source, TraceSelection& selection, Plot& plot);

}  // namespace halvern
