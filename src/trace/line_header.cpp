#include "trace/line_header.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "trace/big_endian.h"
#include "trace/ebcdic.h"
#include "trace/header_definition.h"

namespace halvern {

namespace {

// Offsets count from the start of the text header.
constexpr std::size_t kInterval = 3216;      // whole microseconds
constexpr std::size_t kSamples = 3220;       // per trace
constexpr std::size_t kFieldSamples = 3222;  // per trace, as recorded
constexpr std::size_t kFormatCode = 3224;

constexpr std::byte kEbcdicBlank{0x40};

constexpr int kLineLength = 80;
constexpr int kSlotLength = 16;
constexpr int kSlotsPerLine = kLineLength / kSlotLength;
constexpr int kSlots = kTextHeaderBytes / kSlotLength;

const char* type_name(int type) { return type == 0 ? "I2" : type == 1 ? "I4" : "R4"; }

}  // namespace

LineHeader::LineHeader() {
    std::fill_n(bytes_.begin(), kTextHeaderBytes, kEbcdicBlank);
    std::fill(bytes_.begin() + kTextHeaderBytes, bytes_.end(), std::byte{});
}

SampleInterval LineHeader::sample_interval() const {
    return SampleInterval::of_us(static_cast<int>(get_u16(bytes().subspan<kInterval, 2>())));
}

void LineHeader::set_sample_interval(SampleInterval interval) {
    put_i16(bytes().subspan<kInterval, 2>(), interval.us());
}

int LineHeader::samples() const { return get_i16(bytes().subspan<kSamples, 2>()); }
int LineHeader::field_samples() const { return get_i16(bytes().subspan<kFieldSamples, 2>()); }

void LineHeader::set_samples(int samples, int field_samples) {
    put_i16(bytes().subspan<kSamples, 2>(), samples);
    put_i16(bytes().subspan<kFieldSamples, 2>(), field_samples);
}

SampleFormat LineHeader::format() const {
    switch (format_code()) {
        case 1:
            return SampleFormat::kIbm;
        case 3:
            return SampleFormat::kInt16;
        default:
            return SampleFormat::kIeee;
    }
}

void LineHeader::set_format(SampleFormat format) {
    const int code = format == SampleFormat::kInt16 ? 3 : format == SampleFormat::kIeee ? 5 : 1;
    put_i16(bytes().subspan<kFormatCode, 2>(), code);
}

int LineHeader::format_code() const { return get_i16(bytes().subspan<kFormatCode, 2>()); }

void LineHeader::build_from_definition(const std::string& path, SampleInterval interval,
                                       int samples, SampleFormat format) {
    *this = LineHeader();
    TraceHeaderDefinition definition;
    if (definition.load(path) == 0) {
        const int listed = std::min(definition.count(), kSlots);
        for (int i = 0; i < listed; ++i) {
            // A location of more than three digits is cut with the slot; the last column is blank.
            char slot[kSlotLength];
            const int length = std::snprintf(slot, sizeof slot, "%8s %3d %s", definition.name(i),
                                             definition.location(i), type_name(definition.type(i)));
            const int column = i % kSlotsPerLine * kSlotLength;
            auto place = bytes_.begin() + i / kSlotsPerLine * kLineLength + column;
            for (int c = 0; c < std::min(length, kSlotLength - 1); ++c) {
                *place++ = ascii_to_ebcdic(static_cast<std::byte>(slot[c]));
            }
        }
    }
    set_sample_interval(interval);
    set_samples(samples, samples);
    set_format(format);
}

}  // namespace halvern
