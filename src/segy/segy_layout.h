#pragma once

#include <cstdint>
#include <string>

#include "trace/line_header.h"
#include "trace/sample_format.h"

namespace halvern {

/// What a line header says about the trace records behind it. All records are of one size, which
/// follows from the binary header alone, whatever the trace headers say of themselves.
struct SegyLayout {
    static constexpr int kMostSamples = 1'000'000;
    static constexpr std::int64_t kTextHeaderBlock = 3200;

    SampleInterval interval;
    int samples = 0;        ///< of every record here: the actual count
    int field_samples = 0;  ///< of the field recording: the real count
    SampleFormat format = SampleFormat::kIeee;
    int format_code = 0;  ///< as found; anything but 1, 3 and 5 is read as IEEE floats
    int text_headers =
        0;  ///< extended text headers before the first trace; negative: not said how many

    static SegyLayout parse(const LineHeader& line);

    /// Why such records cannot be read, as the end of a sentence about the file; empty: they can.
    std::string problem() const;

    std::int64_t record_bytes() const;
    /// Offset of the first trace record in a file.
    std::int64_t first_record() const { return kLineHeaderBytes + kTextHeaderBlock * text_headers; }
    /// Offset of trace record `index`, from 0.
    std::int64_t record_offset(std::int64_t index) const {
        return first_record() + index * record_bytes();
    }
};

/// The revision of a line header's layout, 0 where its field holds no number that a writer uses.
int segy_revision(const LineHeader& line);

/// The line header of an output with records of `samples` samples at `interval` in `format`:
/// a copy of `line` without what held for the file it came from only, which is extended text
/// headers and, from revision 2 on, the counts and offsets that override the older fields.
LineHeader segy_output_line(const LineHeader& line, SampleFormat format, int samples,
                            SampleInterval interval);

}  // namespace halvern
