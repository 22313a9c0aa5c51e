#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/report.h"
#include "native/native_layout.h"
#include "platform/block_reader.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// How the opening of a native dataset went.
enum class NativeOpening {
    kOpened,
    kNotValid,      ///< no main file, or a listed part is missing or makes no sense; the log says
    kNoDefinition,  ///< the dataset's header description cannot be loaded
};

/// Reads the traces of a native dataset one by one, segment after segment. Each trace is a fresh
/// copy of its header in the reader's own image, attached to the definition, and its raw samples,
/// lent until the next read.
class NativeReader {
public:
    NativeReader() = default;
    NativeReader(const NativeReader&) = delete;
    NativeReader& operator=(const NativeReader&) = delete;

    /// Opens the dataset of that main file and logs its statistics. What
    /// it has to say goes to `report`, which stays; a "Reading Trace" line comes every
    /// `progress_interval` traces, 0: never.
    [[nodiscard]] NativeOpening open(const std::string& path, int progress_interval,
                                     const Reporter& report);

    /// 1, or 0 at the end of the data or when reading fails, as fault() says.
    int read_next();
    /// Reads trace `index`, from 0. 1, or 0 when there is none.
    int read_trace(std::int64_t index) { return move_to(index) ? read_next() : 0; }
    /// Makes trace `index` the next one. The place after the last trace is its end.
    [[nodiscard]] bool move_to(std::int64_t index);

    /// Why there is no trace where there was one when the dataset was opened.
    const Fault& fault() const { return fault_; }

    std::int64_t trace_count() const { return trace_count_; }
    const NativeMain& parts() const { return parts_; }
    const NativeLayout& layout() const { return layout_; }
    LineHeader& line() { return line_; }
    TraceHeaderDefinition& definition() { return definition_; }
    TraceSamples& samples() { return samples_; }

private:
    struct Segment {
        std::int64_t first;  // index of its first trace
        std::int64_t traces;
    };
    Fault open_segment(std::size_t index);

    const Reporter* report_ = nullptr;  // from open() on
    NativeMain parts_;
    NativeLayout layout_;
    std::vector<Segment> segments_;
    std::size_t segment_ = 0;  // the one that is open
    std::optional<BlockReader> head_;
    std::optional<BlockReader> data_;
    std::int64_t trace_count_ = 0;
    std::int64_t next_ = 0;
    Fault fault_;
    int progress_interval_ = 0;
    LineHeader line_;
    TraceHeaderDefinition definition_;
    TraceSamples samples_;
    std::array<std::byte, kTraceHeaderBytes> image_{};
};

}  // namespace halvern
