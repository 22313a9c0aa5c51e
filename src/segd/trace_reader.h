#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "segd/block_source.h"
#include "segd/description.h"
#include "segd/record_reader.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern::segd {

struct TraceReaderOptions {
    std::string header_path;       ///< the header description that the traces are given
    std::string description_path;  ///< what else to copy; a file that is not there: nothing
    Dialect dialect = Dialect::kOther;
    bool blocked = false;     ///< many traces are packed into a block; see RecordReader
    int trace_length_ms = 0;  ///< what is kept of each trace; 0: all data
};

/// Reads the traces of SEG-D records, tape after tape or from a file, in the system's own form:
/// with a trace header and a line header, in millivolts. The line takes sample interval and count
/// from the first record's first seismic channel set (its first set, when none is seismic). What is
/// met besides traces comes as values.
class TraceReader {
public:
    TraceReader() = default;
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;

    /// False when the header description cannot be loaded.
    [[nodiscard]] bool load(TraceReaderOptions options);
    /// Begins to read: the header of the first record, and ahead to the first trace of the line's
    /// own set, which says how many samples the line has.
    RecordReader::Record open(BlockSource& source);
    /// Goes on with another tape.
    void go_on(BlockSource& source);

    enum class Met {
        kTrace,          ///< in definition() and samples(), which stay until the next call
        kOtherInterval,  ///< a trace with another sample interval than the line's: left out
        kRecord,         ///< another record begins
        kEndOfRecord,
        kLostBlock,       ///< a block of the record cannot be read
        kBadTraceHeader,  ///< no trace header where one is due
        kBadTrace,        ///< a trace header, and no samples after it
        kLostHeader,      ///< a record's header cannot be read: its tape file is skipped
        kBadHeader,       ///< it can, and records().fault() says what is wrong; likewise
        kNoWayOn,         ///< there are no going on and no end, and trouble() says why
        kEnd,             ///< of the tape
    };
    Met next();
    /// Whether the samples are fetched; without them a trace has 0 stored ones.
    void set_samples_wanted(bool wanted) { samples_wanted_ = wanted; }

    LineHeader& line() { return line_; }
    TraceHeaderDefinition& definition() { return definition_; }
    TraceSamples& samples() { return samples_; }
    /// Samples of the line's traces before they are cut to what is kept, or to what a line can
    /// have.
    std::int64_t trace_samples() const { return trace_samples_; }
    int line_samples() const { return line_samples_; }
    SampleInterval interval() const { return interval_; }
    const Description& description() const { return description_; }

    /// The record that is being read, and how far.
    const RecordReader& records() const { return *records_reader_; }
    std::int64_t record_count() const { return records_; }  ///< those with a header of use
    bool found_blocked() const { return blocked_ != options_.blocked || records().found_blocked(); }
    std::string trouble() const { return source_ ? source_->trouble() : std::string(); }
    /// What a user should know about the traces so far, a sentence each, without its
    /// full stop.
    std::vector<std::string> remarks() const;

private:
    struct Sight {
        RecordReader::Record record{};
        std::int64_t samples = 0;  // of the line's traces
        bool astray = false;       // what begins the record is no trace to a block
    };
    Sight look_ahead(bool blocked);
    Met take();
    void fill_header(const Trace& trace);
    void fill_samples(const Trace& trace);

    TraceReaderOptions options_;
    std::optional<RepeatingSource> source_;
    std::optional<RecordReader> records_reader_;
    Description description_;
    LineHeader line_;
    TraceHeaderDefinition definition_;
    TraceSamples samples_;
    std::array<std::byte, kTraceHeaderBytes> image_{};  // of the current trace
    std::vector<int> words_;                            // that every record fills: their indexes

    SampleInterval interval_;
    std::int64_t trace_samples_ = 0;
    int line_samples_ = 0;
    bool blocked_ = false;
    bool samples_wanted_ = true;
    bool record_waits_ = false;  // its header has been read, and it has not been given yet
    bool in_record_ = false;
    bool skip_due_ = false;  // the rest of the tape file is of no use
    std::int64_t records_ = 0;
    std::int64_t other_length_ = 0;     // traces cut or filled up
    std::int64_t other_interval_ = 0;   // traces left out
    std::int64_t foreign_numbers_ = 0;  // of earlier tapes
    std::int64_t bad_samples_ = 0;      // not finite
    std::int64_t bad_traces_ = 0;       // traces with such
};

/// The index in sets() of the set that a line takes its interval and samples from.
std::size_t line_set(const RecordHeader& header);

}  // namespace halvern::segd
