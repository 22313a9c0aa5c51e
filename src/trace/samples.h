#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "trace/header_definition.h"
#include "trace/sample_format.h"

namespace halvern {

/// The samples of one trace: the raw record as it was read (borrowed from the reader's buffer) and,
/// once somebody asks, the same samples as floats (owned). One object serves a whole run; its
/// buffers grow to the longest trace and are then reused, so that no trace allocates.
class TraceSamples {
public:
    /// A new record: `raw` holds `stored` samples of the line's `nominal` in `format`; the samples
    /// behind them count as 0. `second_count` is kept for writers that want it. A stored count
    /// outside 0 … nominal, or beyond what `raw` holds, is held within it.
    void set_raw(std::span<const std::byte> raw, int stored, int nominal, int second_count,
                 SampleFormat format);

    /// The nominal-count samples as floats, converted on the first call. 16-bit records need the
    /// header word WEIGHT of the attached image; a definition without it ends the job.
    std::span<float> floats(const TraceHeaderDefinition& definition);

    /// Hands a worked array of nominal count back: the span that floats() gave (the raw record is
    /// stale from here on) or any other array, which is copied. An array of another length is a new
    /// trace of that length: it becomes the nominal and stored count.
    void set_floats(std::span<float> worked);
    /// A new array, taken over; its length becomes the nominal and stored count.
    void set_floats(std::vector<float>&& worked);

    /// Writes `count` samples in `target` (kIeee, kIbm or kInt16) to `raw`, zero-filled behind the
    /// stored ones. kInt16 sets WEIGHT in the attached image and ends the job when it is missing.
    /// An IEEE or IBM record that nobody worked on is copied byte for byte when the target is the
    /// same. Gives the number of samples that were not finite and could not be kept (kInt16 only).
    std::int64_t to_format(TraceHeaderDefinition& definition, SampleFormat target,
                           std::span<std::byte> raw, int count);

    int nominal_count() const { return nominal_; }
    int stored_count() const { return stored_; }
    int second_count() const { return second_; }
    SampleFormat format() const { return format_; }
    /// True while the raw record is what the trace holds: nobody has handed floats back.
    bool raw_valid() const { return raw_valid_; }
    std::span<const std::byte> raw() const { return raw_; }
    /// Nominal count x 2 for kInt16, x 4 otherwise.
    std::int64_t bytes_per_record() const;

    /// The multiplier of SEG-D encodings (codes 3 to 5); 1 unless set. Stays until set again.
    void set_descale(double multiplier) { descale_ = multiplier; }

private:
    int weight_index(const TraceHeaderDefinition& definition);

    std::span<const std::byte> raw_;  // of the current record
    std::vector<float> floats_;       // [nominal samples] once converted
    int nominal_ = 0;
    int stored_ = 0;
    int second_ = 0;
    SampleFormat format_ = SampleFormat::kIeee;
    double descale_ = 1.0;
    bool raw_valid_ = false;
    bool converted_ = false;
    const TraceHeaderDefinition* weight_of_ = nullptr;  // whose index of WEIGHT is cached
    int weight_index_ = -1;
};

}  // namespace halvern
