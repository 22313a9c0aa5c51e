#include "flow/record_encoder.h"

#include <algorithm>

namespace halvern {

RecordEncoder::RecordEncoder(const TraceHeaderDefinition& definition, SampleFormat format,
                             int samples, SampleInterval interval, std::int64_t traces_before)
    : format_(format),
      samples_(samples),
      interval_(interval),
      record_(static_cast<std::size_t>(kTraceHeaderBytes) +
              static_cast<std::size_t>(samples) *
                  static_cast<std::size_t>(bytes_per_sample(format))),
      line_number_(definition.find("TRNUML")),
      reel_number_(definition.find("TRNUMR")),
      num_samps_(definition.find("NUMSAMPS")),
      samp_rate_(definition.find("SAMPRATE")),
      traces_before_(traces_before) {}

std::span<const std::byte> RecordEncoder::encode(TraceHeaderDefinition& definition,
                                                 TraceSamples& samples) {
    ++encoded_;
    const auto number = static_cast<double>(traces_before_ + encoded_);
    definition.set_double(line_number_, number);
    definition.set_double(reel_number_, number);
    definition.set_double(num_samps_, samples_);
    const int interval_us = interval_.us();
    definition.set_double(samp_rate_, interval_us);
    // Samples first: 16-bit ones leave their exponent in the header.
    const std::span<std::byte> record = record_;
    not_finite_ +=
        samples.to_format(definition, format_, record.subspan(kTraceHeaderBytes), samples_);
    std::copy_n(definition.image(), kTraceHeaderBytes, record.begin());
    return record_;
}

}  // namespace halvern
