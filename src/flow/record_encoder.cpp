#include "flow/record_encoder.h"

#include <algorithm>
#include <limits>

namespace halvern {

namespace {

/// The largest number up to which word `index` counts without a gap.
std::int64_t most_of(const TraceHeaderDefinition& definition, int index) {
    if (index < 0) return std::numeric_limits<std::int64_t>::max();
    switch (static_cast<HeaderType>(definition.type(index))) {
        case HeaderType::kI4:
            return std::numeric_limits<std::int32_t>::max();
        case HeaderType::kR4:
            return std::int64_t{1} << std::numeric_limits<float>::digits;
        default:
            return std::numeric_limits<std::int16_t>::max();
    }
}

}  // namespace

RecordEncoder::RecordEncoder(const Reporter& report, const TraceHeaderDefinition& definition,
                             SampleFormat format, int samples, SampleInterval interval,
                             std::int64_t traces_before)
    : report_(&report),
      format_(format),
      samples_(samples),
      interval_(interval),
      record_(static_cast<std::size_t>(kTraceHeaderBytes) +
              static_cast<std::size_t>(samples) *
                  static_cast<std::size_t>(bytes_per_sample(format))),
      line_number_(definition.find("TRNUML")),
      reel_number_(definition.find("TRNUMR")),
      num_samps_(definition.find("NUMSAMPS")),
      samp_rate_(definition.find("SAMPRATE")),
      weight_(definition.find("WEIGHT")),
      most_traces_(std::min(most_of(definition, line_number_), most_of(definition, reel_number_))),
      traces_before_(traces_before) {}

std::span<const std::byte> RecordEncoder::encode(TraceHeaderDefinition& definition,
                                                 TraceSamples& samples) {
    ++encoded_;
    const auto number = static_cast<double>(traces_before_ + encoded_);
    if (report_ && traces_before_ + encoded_ > most_traces_) {
        report_->Warning(
            "TRNUML and TRNUMR can count to %lld: what they hold from the next trace on is not "
            "its number.\n",
            static_cast<long long>(most_traces_));
        report_ = nullptr;
    }
    definition.set_double(line_number_, number);
    definition.set_double(reel_number_, number);
    definition.set_double(num_samps_, samples_);
    const int interval_us = interval_.us();
    definition.set_double(samp_rate_, interval_us);
    const bool again =
        format_ == SampleFormat::kInt16 && samples.format() == format_ && samples.raw_valid();
    const int weight_before = again ? definition.get_int(weight_) : 0;
    // Samples first: 16-bit ones leave their exponent in the header.
    const std::span<std::byte> record = record_;
    not_finite_ +=
        samples.to_format(definition, format_, record.subspan(kTraceHeaderBytes), samples_);
    if (again && definition.get_int(weight_) < weight_before) ++coarser_;
    std::copy_n(definition.image(), kTraceHeaderBytes, record.begin());
    return record_;
}

void RecordEncoder::log_written(const Reporter& report, const std::string& path) const {
    if (encoded_ == 0) {
        report.Warning("No trace came: nothing was written to '%s'.\n", path.c_str());
    } else {
        report.Message("Wrote %lld traces of %d samples to '%s'.\n",
                       static_cast<long long>(encoded_), samples_, path.c_str());
    }
    if (not_finite_ > 0) {
        report.Warning(
            "%lld samples were not finite numbers: NaN was written as 0, an infinity as the "
            "largest value of its sign.\n",
            static_cast<long long>(not_finite_));
    }
    if (coarser_ > 0) {
        report.Warning(
            "%lld traces of 16-bit integers hold values at the end of that range: their WEIGHT "
            "fell, and every sample of them lost its last bit.\n",
            static_cast<long long>(coarser_));
    }
}

}  // namespace halvern
