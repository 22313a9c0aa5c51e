#pragma once

#include <cstdint>
#include <string>

#include "picture/canvas.h"
#include "platform/fault.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// What can be seen of traces. A plot is given them one by one, keeps what it needs of each, and
/// draws itself; where traces come from and where the picture goes is others' affair. It changes no
/// trace.
class Plot {
public:
    virtual ~Plot() = default;

    /// Makes ready for traces of `line` and forgets those that it has: once before the first trace,
    /// and again for every further page. A fault: what it was asked to show is not there.
    virtual Fault begin(const LineHeader& line, const TraceHeaderDefinition& definition) = 0;
    /// Takes the trace whose header is attached to the definition that begin() was given. `number`
    /// is its place in the data, from 1. A fault: it can take no more, and nothing is to be drawn.
    virtual Fault add(const TraceHeaderDefinition& definition, TraceSamples& samples,
                      std::int64_t number) = 0;
    /// After the last trace, before draw(). A fault: why there is nothing to see.
    virtual Fault finish() = 0;

    /// False: add() looks at headers alone.
    virtual bool wants_samples() const { return false; }
    /// It has as many traces as it was to show; a further one must not be added.
    virtual bool full() const { return false; }

    /// Draws the whole picture, on a canvas of any size. A fault: the canvas is too small.
    virtual Fault draw(picture::Canvas& canvas, const std::string& title) const = 0;
    /// What would make a picture of that size easier to read: a sentence without its full stop.
    virtual std::string advice(const picture::Canvas&) const { return {}; }
};

}  // namespace halvern
