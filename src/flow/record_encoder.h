#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/report.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"
#include "trace/samples.h"

namespace halvern {

/// Makes the records of one output: numbers the traces, stamps count and interval into their
/// headers and encodes their samples into one record buffer, which every trace reuses.
class RecordEncoder {
public:
    RecordEncoder() = default;
    /// For traces of `definition` with `samples` samples (from 0) at `interval`,
    /// in `format` (kIeee, kIbm or kInt16). The first one becomes number `traces_before` + 1; where
    /// the numbers outgrow their words, `report`, which stays, is told once.
    RecordEncoder(const Reporter& report, const TraceHeaderDefinition& definition,
                  SampleFormat format, int samples, SampleInterval interval,
                  std::int64_t traces_before = 0);

    /// Stamps TRNUML, TRNUMR, NUMSAMPS and SAMPRATE, as far as they are defined, into the image
    /// that `definition` has attached, and gives the trace's record: its header and its samples,
    /// cut or filled up with zeros. Valid until the next call.
    std::span<const std::byte> encode(TraceHeaderDefinition& definition, TraceSamples& samples);

    SampleFormat format() const { return format_; }
    int samples() const { return samples_; }
    SampleInterval interval() const { return interval_; }
    std::int64_t record_bytes() const { return static_cast<std::int64_t>(record_.size()); }
    std::int64_t encoded() const { return encoded_; }  ///< traces so far
    /// Samples so far that were not finite and could not be kept (kInt16 only).
    std::int64_t not_finite() const { return not_finite_; }

    /// Sums up what was written to `path`: traces, and what of them could not be kept.
    void log_written(const Reporter& report, const std::string& path) const;

private:
    const Reporter* report_ = nullptr;  // null once it was told
    SampleFormat format_ = SampleFormat::kIeee;
    int samples_ = 0;
    SampleInterval interval_;
    std::vector<std::byte> record_;
    int line_number_ = -1;  // indexes of header words: TRNUML, TRNUMR, NUMSAMPS and SAMPRATE
    int reel_number_ = -1;
    int num_samps_ = -1;
    int samp_rate_ = -1;
    int weight_ = -1;
    std::int64_t most_traces_ = 0;  // that both words can count
    std::int64_t traces_before_ = 0;
    std::int64_t encoded_ = 0;
    std::int64_t not_finite_ = 0;
    std::int64_t coarser_ = 0;  // 16-bit traces whose WEIGHT fell as they were encoded again
};

}  // namespace halvern
