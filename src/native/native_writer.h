#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "foundation/report.h"
#include "native/native_layout.h"
#include "native/segment_place.h"
#include "platform/block_writer.h"
#include "trace/header_definition.h"

namespace halvern {

/// Writes a native dataset: headers and samples into pairs of files, a new pair when a DATA file
/// grows too large or its disk too full. What the main file lists exists at every moment, so a job
/// that is killed leaves a dataset that opens and holds the traces up to a hundred before.
class NativeWriter {
public:
    enum class Mode {
        kAppend = 0,     ///< behind the traces of a dataset; one that cannot be read is created
        kCreate = 1,     ///< a new dataset; the files of one that exists are deleted
        kOverwrite = 2,  ///< over the traces of a dataset, in place
    };

    NativeWriter() = default;
    ~NativeWriter() { static_cast<void>(finish()); }
    NativeWriter(const NativeWriter&) = delete;
    NativeWriter& operator=(const NativeWriter&) = delete;

    /// Opens the dataset of the main file `path` for traces of that layout and description. 1, or 0
    /// with log lines. Nothing of an existing dataset is deleted before the new one stands.
    [[nodiscard]] int open(const std::string& path, Mode mode, const NativeLayout& layout,
                           const TraceHeaderDefinition& definition, NativePlaces places,
                           const Reporter& report);

    /// Writes a trace: its 240-byte header and its sample record. 0, or -1 with a log line.
    [[nodiscard]] int write_trace(std::span<const std::byte> header,
                                  std::span<const std::byte> record);

    /// Hands everything to the system and closes. 0, or -1 when that or any write before it failed.
    [[nodiscard]] int finish();

    /// Traces that were in the dataset when it was opened to append or overwrite.
    std::int64_t traces_before() const { return traces_before_; }

private:
    bool create(bool replaces);
    bool append();
    bool overwrite();
    bool open_pair(std::int64_t trace);
    bool next_pair();
    bool close_pair();
    void delete_parts(const NativeMain& parts) const;

    std::string path_;
    const Reporter* report_ = nullptr;  // from open() on
    NativePlaces places_;
    NativeLayout layout_;
    const TraceHeaderDefinition* definition_ = nullptr;  // while open() runs
    Mode mode_ = Mode::kCreate;
    NativeMain parts_;
    std::size_t segment_ = 0;      // the one that is written
    std::int64_t in_segment_ = 0;  // traces of it that are written, those from before included
    std::int64_t capacity_ = 0;    // of the segment, when overwriting
    std::int64_t written_ = 0;     // traces of this run
    std::int64_t traces_before_ = 0;
    BlockWriter head_;
    BlockWriter data_;
};

}  // namespace halvern
