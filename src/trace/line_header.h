#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>

#include "trace/sample_format.h"
#include "trace/sample_interval.h"

namespace halvern {

/// The 3600 bytes that go with a trace stream, in SEG-Y layout: a 3200-byte EBCDIC text header (40
/// lines of 80), then a 400-byte binary header with big-endian 16-bit fields.
class LineHeader {
public:
    /// Blank EBCDIC text, zero binary header.
    LineHeader();

    /// The field holds whole microseconds: writing drops the part of one. It is read as unsigned,
    /// so 32768 … 65535 us are valid.
    SampleInterval sample_interval() const;
    void set_sample_interval(SampleInterval interval);

    /// Samples per trace, and samples per trace as recorded in the field.
    int samples() const;
    int field_samples() const;
    void set_samples(int samples, int field_samples);

    /// The format code, mapped: 3 is kInt16, 1 is kIbm, anything else is kIeee.
    SampleFormat format() const;
    /// Stores 3 for kInt16, 5 for kIeee, 1 for anything else.
    void set_format(SampleFormat format);
    /// The format code as it stands in the binary header.
    int format_code() const;

    /// Fills the text header with the words of a description file, 5 slots of 16 characters a line,
    /// as EBCDIC, and zeroes the binary header but for the three values. A description that cannot
    /// be loaded leaves the text blank. At most 200 words fit; further ones are left out.
    void build_from_definition(const std::string& path, SampleInterval interval, int samples,
                               SampleFormat format);

    std::span<std::byte, kLineHeaderBytes> bytes() { return bytes_; }
    std::span<const std::byte, kLineHeaderBytes> bytes() const { return bytes_; }

private:
    std::array<std::byte, kLineHeaderBytes> bytes_;
};

}  // namespace halvern
