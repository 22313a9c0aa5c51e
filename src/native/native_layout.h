#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/fault.h"
#include "platform/file_lock.h"
#include "trace/file_kind.h"
#include "trace/sample_format.h"
#include "trace/sample_interval.h"

namespace halvern {

/// A pair of files with consecutive traces of a dataset: 240-byte header images in the one, raw
/// sample records in the other.
struct NativeSegment {
    std::string head_path;
    std::string data_path;
};

/// The main file of a native dataset: a magic line, then the paths of the parts, one a line.
struct NativeMain {
    static constexpr const char* kMagic = kDatasetMagic;

    std::string desc_path;                ///< the trace header description
    std::string line_path;                ///< the line header values
    std::vector<NativeSegment> segments;  ///< in trace order

    /// The file, read once and whole. A fault when it cannot be, has no magic, names a HEAD file
    /// without its DATA file or a path that is too long, or lacks the DESC or LINE file.
    static Result<NativeMain> read(const std::string& path);
    /// Characters of a listed path that `read` takes.
    static constexpr std::size_t kLongestPath = 198;

    /// Replaces the file by writing beside it and renaming, so that whoever reads it finds the old
    /// or the new list, never a part; a `lock` of the old one becomes one of the new. A fault also
    /// when a path is too long to be read again.
    Fault write(const std::string& path, FileLock* lock = nullptr) const;

    /// Every path that the file lists.
    std::vector<std::string> paths() const;
};

/// The line header values of a native dataset, its LINE file.
struct NativeLayout {
    static constexpr int kMostSamples = 32767;  ///< what a line header holds
    /// Likewise.
    static constexpr SampleInterval kMostInterval{65536 * SampleInterval::kPerUs - 1};

    int samples = 0;  ///< of every trace
    SampleInterval interval;
    SampleFormat format = SampleFormat::kIeee;

    /// The file read, its keys in any order; a fault when it cannot be read or a value is out of
    /// range (samples 0 to kMostSamples, interval 0 or 1 us to kMostInterval, format 0 to 2).
    static Result<NativeLayout> read(const std::string& path);
    Fault write(const std::string& path) const;

    std::int64_t sample_bytes() const { return std::int64_t{samples} * bytes_per_sample(format); }
    std::int64_t record_bytes() const { return kTraceHeaderBytes + sample_bytes(); }
};

/// Traces of a segment: whole headers and whole sample records, whichever are fewer, because a job
/// that was killed may have left more of the one than of the other. A fault, which names the file,
/// when there is none.
Result<std::int64_t> native_segment_traces(const NativeSegment& segment,
                                           const NativeLayout& layout);

}  // namespace halvern
