#include "segy/segy_layout.h"

#include <algorithm>

#include "trace/big_endian.h"

namespace halvern {

namespace {

constexpr std::size_t kRevision = 3500;     // 2 bytes: major, minor
constexpr std::size_t kTextHeaders = 3504;  // 2 bytes: extended text headers, negative: variable

// The largest record that a buffer is sized for on the word of the field recording's count.

std::int64_t record_bytes_of(int samples, SampleFormat format) {
    return kTraceHeaderBytes + std::int64_t{samples} * bytes_per_sample(format);
}

}  // namespace

int segy_revision(const LineHeader& line) {
    const std::uint32_t field = get_u16(line.bytes().subspan<kRevision, 2>());
    // 1.0 is found as 0100, and from writers that took the field for one number as 1, 16 or 100.
    if (field == 1 || field == 16 || field == 100) return 1;
    // Fill bytes and text in a header from before the field existed are no revision.
    const std::uint32_t major = field >> 8;
    return major <= 15 ? static_cast<int>(major) : 0;
}

LineHeader segy_output_line(const LineHeader& line, SampleFormat format, int samples,
                            SampleInterval interval) {
    struct Field {
        std::size_t offset, size;
    };
    constexpr Field kOfRevision2[] = {
        {3268, 4},   // samples per trace
        {3272, 8},   // sample interval
        {3506, 4},   // additional trace headers
        {3512, 16},  // number of traces, offset of the first
        {3528, 4},   // trailer records
    };
    LineHeader header = line;
    const int revision = segy_revision(line);
    const std::span<std::byte, kLineHeaderBytes> bytes = header.bytes();
    if (revision >= 1) put_u16(bytes.subspan<kTextHeaders, 2>(), 0);
    if (revision >= 2) {
        for (const auto& [offset, size] : kOfRevision2) {
            std::ranges::fill(bytes.subspan(offset, size), std::byte{0});
        }
    }
    header.set_sample_interval(interval);
    header.set_samples(samples, samples);
    header.set_format(format);
    return header;
}

SegyLayout SegyLayout::parse(const LineHeader& line) {
    SegyLayout layout{.interval = line.sample_interval(),
                      .samples = line.samples(),
                      .field_samples = line.field_samples(),
                      .format = line.format(),
                      .format_code = line.format_code()};
    if (segy_revision(line) >= 1) {
        layout.text_headers = get_i16(line.bytes().subspan<kTextHeaders, 2>());
    }
    return layout;
}

std::string SegyLayout::problem() const {
    if (samples < 0 || samples > kMostSamples) {
        return "gives " + std::to_string(samples) +
               " samples a trace in its binary header; a count from 0 to " +
               (samples < 0 ? "32767 fits the field"
                            : std::to_string(kMostSamples) + " can be read");
    }
    if (text_headers < 0) {
        return "announces a variable number of extended text headers (" +
               std::to_string(text_headers) + "); only a stated number can be stepped over";
    }
    return {};
}

std::int64_t SegyLayout::record_bytes() const { return record_bytes_of(samples, format); }

}  // namespace halvern
