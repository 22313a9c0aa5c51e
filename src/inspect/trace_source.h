#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// A file with traces, of whatever kind, read one by one: SEG-Y, a native dataset, SEG-D, or a tape
/// image that holds one of the first and the last. Nothing is written to the log.
class TraceSource {
public:
    virtual ~TraceSource() = default;

    /// What the file is, as a person calls it: "SEG-Y file".
    virtual std::string kind() const = 0;
    /// Reads the next trace: false at the end of the data or when reading fails; ended_early()
    /// tells which. A trace's header is attached to definition(), its samples are in samples();
    /// both stay until the next read.
    virtual bool next() = 0;
    /// Makes trace `index`, from 0, the next one; false where there is none, and always where the
    /// file can only be read from front to end.
    [[nodiscard]] virtual bool move_to(std::int64_t /*index*/) { return false; }
    /// Whether next() fetches samples; it does unless told otherwise. Without them a trace has 0
    /// stored ones.
    virtual void set_samples_wanted(bool wanted) = 0;

    /// -1 where only reading to the end can tell.
    virtual std::int64_t trace_count() const = 0;
    virtual LineHeader& line() = 0;
    virtual TraceHeaderDefinition& definition() = 0;
    virtual TraceSamples& samples() = 0;
    /// The samples of the current trace as floats; as many as it has.
    std::span<const float> floats() { return samples().floats(definition()); }

    /// Whether line() came with the file: its text is not made from the header description.
    virtual bool has_text() const { return false; }
    /// How samples are stored: "IBM float, 32 bit".
    virtual std::string sample_format() const = 0;
    /// What else there is to say, name and value: file size, channel sets, parts.
    virtual std::vector<std::pair<std::string, std::string>> facts() const { return {}; }
    /// What a user should know and would not expect, a sentence each.
    virtual std::vector<std::string> oddities() const { return {}; }
    /// Why the data end before they should; empty when they do not.
    virtual std::string ended_early() const { return {}; }
    /// Both of these, for the user.
    std::vector<std::string> notes() const;
};

/// A source, or why there is none, as the rest of a sentence.
struct TraceOpening {
    std::unique_ptr<TraceSource> source;
    std::string failure;
};

/// Opens `path`; its kind is told by its bytes, whatever its name. `header_path` is the header
/// description that a file without one of its own is read with.
TraceOpening open_trace_source(const std::string& path, const std::string& header_path);

/// "IBM float, 32 bit" and the like.
std::string sample_format_text(SampleFormat format);

}  // namespace halvern
