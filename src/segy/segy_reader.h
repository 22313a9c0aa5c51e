#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/report.h"
#include "segy/segy_layout.h"
#include "segy/segy_source.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// How the opening of a SEG-Y stream went.
enum class SegyOpening {
    kOpened,
    kNotValid,      ///< cannot be opened, too short, or its header makes no sense; the log says why
    kNoDefinition,  ///< the header description could not be loaded
};

struct SegyReaderOptions {
    std::string header_path;    ///< the header description to read the traces with
    int progress_interval = 0;  ///< traces from one "Reading Trace" line to the next; 0: none
    const Reporter* report = nullptr;  ///< what the reader has to say; null: said nowhere
};

/// Reads the traces of a SEG-Y stream one by one. Each trace is a fresh copy of its 240-byte header
/// in the reader's own image, attached to the definition, and its raw samples, lent from the
/// source's block: they stay until the next read.
class SegyReader {
public:
    SegyReader() = default;
    SegyReader(const SegyReader&) = delete;
    SegyReader& operator=(const SegyReader&) = delete;

    /// Opens a file on disk, or any other source, reads its headers and logs its statistics.
    /// `path` is the name that the log knows the stream by.
    [[nodiscard]] SegyOpening open(const std::string& path, const SegyReaderOptions& options);
    [[nodiscard]] SegyOpening open(const std::string& path, std::unique_ptr<SegySource> source,
                                   const SegyReaderOptions& options);
    bool valid() const { return valid_; }

    /// Reads the next trace: 1, or 0 at the end of the data or when reading fails, as fault() says.
    int read_next();
    /// Reads trace `index`, counted from 0; disk only. 1, or 0 when there is none.
    int read_trace(std::int64_t index);
    /// Makes trace `index` the next one; disk only. The place after the last trace is its end.
    [[nodiscard]] bool move_to(std::int64_t index);
    /// Writes the current trace's header, and its samples when they are wanted, over its record in
    /// the file; disk only. 0, or -1 when there is no current trace or it cannot be written.
    [[nodiscard]] int rewrite_current();

    /// Whether a read fetches the samples, too; it does unless told otherwise. Without them every
    /// trace has 0 stored samples.
    void set_samples_wanted(bool wanted) { samples_wanted_ = wanted; }

    /// Why a file gives no trace although it had one there when it was opened.
    const Fault& fault() const { return fault_; }
    /// Why the file was not opened although it can be read.
    const SegyRefusal& refusal() const { return refusal_; }

    std::int64_t trace_count() const { return trace_count_; }  ///< 0 where it is not known (a tape)
    std::int64_t file_size() const { return file_size_; }      ///< -1 likewise
    /// Bytes after the last whole record of a file, which are not read.
    std::int64_t left_over() const { return left_over_; }
    const SegyLayout& layout() const { return layout_; }
    LineHeader& line() { return line_; }
    TraceHeaderDefinition& definition() { return definition_; }
    TraceSamples& samples() { return samples_; }
    /// What the headers of the traces read so far say that was not followed, a sentence each.
    std::vector<std::string> remarks() const;

private:
    bool read_headers(const std::string& path);
    void log_statistics(const std::string& path) const;
    void log_oddities(const std::string& path) const;
    bool contradicts() const;

    SilentReporter silent_;
    const Reporter* report_ = &silent_;
    std::unique_ptr<SegySource> source_;
    LineHeader line_;
    SegyLayout layout_;
    TraceHeaderDefinition definition_;
    TraceSamples samples_;
    std::array<std::byte, kTraceHeaderBytes> image_{};  // of the current trace
    std::int64_t record_bytes_ = 0;
    std::int64_t trace_count_ = 0;
    std::int64_t file_size_ = -1;
    std::int64_t left_over_ = 0;
    std::int64_t next_ = 0;               // index of the trace to read next
    std::int64_t next_progress_ = 0;      // multiple of the interval at or after next_
    std::int64_t contradictions_ = 0;     // traces whose own count or interval differs
    std::int64_t odd_stored_counts_ = 0;  // shortened traces of 0 samples, or more than the line's
    Fault fault_;
    SegyRefusal refusal_;
    int progress_interval_ = 0;
    bool samples_wanted_ = true;
    bool valid_ = false;
    bool current_ = false;  // whether image_ holds trace next_ - 1

    int trace_id_ = -1;  // indexes of header words
    int total_samples_ = -1;
    int start_sample_ = -1;
    int num_samps_ = -1;
    int samp_rate_ = -1;
    bool shortened_known_ = false;  // whether the definition can mark shortened traces
    int us_ = 0;                    // the line's interval
};

}  // namespace halvern
