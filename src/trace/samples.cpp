#include "trace/samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "foundation/messages.h"
#include "trace/codecs.h"

namespace halvern {

namespace {

constexpr const char* kWeight = "WEIGHT";

/// 2 to the power -weight, held within what a double has: a weight from a damaged header must not
/// turn zeros into NaN.
double scale_of(int weight) { return std::ldexp(1.0, -std::clamp(weight, -1023, 1074)); }

}  // namespace

void TraceSamples::set_raw(std::span<const std::byte> raw, int stored, int nominal,
                           int second_count, SampleFormat format) {
    raw_ = raw;
    nominal_ = std::max(nominal, 0);
    const std::int64_t there = samples_in(format, static_cast<std::int64_t>(raw.size()));
    stored_ = std::clamp(stored, 0, static_cast<int>(std::min<std::int64_t>(nominal_, there)));
    second_ = second_count;
    format_ = format;
    raw_valid_ = true;
    converted_ = false;
}

int TraceSamples::weight_index(const TraceHeaderDefinition& definition) {
    // Looked up once a definition, not once a trace.
    const char* cached = weight_of_ == &definition ? definition.name(weight_index_) : nullptr;
    if (!cached || std::strcmp(cached, kWeight) != 0) {
        weight_of_ = &definition;
        weight_index_ = definition.find(kWeight);
    }
    if (weight_index_ < 0) {
        LogPrint("Header 'WEIGHT' must be defined!!!\n");
        LogPrint("Cannot convert INT16 trace data without header word 'WEIGHT'\n");
        TerminateJob(kJobError);
    }
    return weight_index_;
}

std::span<float> TraceSamples::floats(const TraceHeaderDefinition& definition) {
    if (converted_) return floats_;
    floats_.resize(static_cast<std::size_t>(nominal_));
    const auto stored = std::span(floats_).first(static_cast<std::size_t>(stored_));
    switch (format_) {
        case SampleFormat::kIbm:
            decode_ibm(raw_, stored);
            break;
        case SampleFormat::kInt16: {
            const int weight = definition.get_int(weight_index(definition));
            decode_int16(raw_, scale_of(weight), stored);
            break;
        }
        case SampleFormat::kSegd8015:
            decode_segd_8015(raw_, descale_, stored);
            break;
        case SampleFormat::kSegd8048:
            decode_segd_8048(raw_, descale_, stored);
            break;
        case SampleFormat::kSegd8036:
            decode_segd_8036(raw_, descale_, stored);
            break;
        default:
            decode_ieee(raw_, stored);
            break;
    }
    std::ranges::fill(std::span(floats_).subspan(stored.size()), 0.0f);
    converted_ = true;
    return floats_;
}

void TraceSamples::set_floats(std::span<float> worked) {
    if (worked.data() == floats_.data()) {
        floats_.resize(worked.size());
    } else {
        floats_.assign(worked.begin(), worked.end());
    }
    if (floats_.size() != static_cast<std::size_t>(nominal_)) {
        nominal_ = stored_ = static_cast<int>(floats_.size());
    }
    converted_ = true;
    raw_valid_ = false;
}

void TraceSamples::set_floats(std::vector<float>&& worked) {
    floats_ = std::move(worked);
    nominal_ = stored_ = static_cast<int>(floats_.size());
    converted_ = true;
    raw_valid_ = false;
}

std::int64_t TraceSamples::to_format(TraceHeaderDefinition& definition, SampleFormat target,
                                     std::span<std::byte> raw, int count) {
    const auto size = static_cast<std::size_t>(bytes_per_sample(target));
    const std::size_t wanted =
        std::min(static_cast<std::size_t>(std::max(count, 0)), raw.size() / size);
    const std::size_t used = std::min(wanted, static_cast<std::size_t>(stored_));
    std::ranges::fill(raw.first(wanted * size).subspan(used * size), std::byte{});

    const bool same = target == format_ && target != SampleFormat::kInt16;
    if (raw_valid_ && same) {
        if (used > 0) std::memcpy(raw.data(), raw_.data(), used * size);
        return 0;
    }
    const std::span<const float> samples = floats(definition).first(used);
    switch (target) {
        case SampleFormat::kIbm:
            encode_ibm(samples, raw);
            return 0;
        case SampleFormat::kInt16: {
            const int index = weight_index(definition);
            const Int16Encoding encoding = encode_int16(samples, raw);
            definition.set_double(index, encoding.weight);
            // The record that these samples were read from had the other weight.
            if (format_ == SampleFormat::kInt16) raw_valid_ = false;
            return encoding.not_finite;
        }
        default:
            encode_ieee(samples, raw);
            return 0;
    }
}

std::int64_t TraceSamples::bytes_per_record() const {
    return std::int64_t{nominal_} * bytes_per_sample(format_);
}

}  // namespace halvern
