#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

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
        kAppend = 0,     ///< after the traces of a dataset; one that is not there is created
        kCreate = 1,     ///< a new dataset; the files of one that exists are deleted
        kOverwrite = 2,  ///< over the traces of a dataset, in place
    };

    /// The dataset to write: its main file, what that lists where it exists, and the lock of it,
    /// which then goes with the file.
    struct Target {
        std::string path;
        std::optional<NativeMain> existing;
        FileLock lock;
    };

    NativeWriter() = default;
    ~NativeWriter() { static_cast<void>(finish()); }
    NativeWriter(const NativeWriter&) = delete;
    NativeWriter& operator=(const NativeWriter&) = delete;

    /// Whether every part that `mode` would write over or after is a dataset's own; else with an
    /// error line.
    static bool may_write(const NativeMain& parts, Mode mode, const NativePlaces& places,
                          const Reporter& report);

    /// Opens the dataset for traces of that layout and description. 1, or 0 with log lines. Nothing
    /// of an existing dataset is deleted before the new one is complete.
    [[nodiscard]] int open(Target target, Mode mode, const NativeLayout& layout,
                           const TraceHeaderDefinition& definition, NativePlaces places,
                           const Reporter& report);

    /// Writes a trace: its 240-byte header and its sample record. 0, or -1 with log lines.
    [[nodiscard]] int write_trace(std::span<const std::byte> header,
                                  std::span<const std::byte> record);

    /// Hands everything to the system, closes, and lets go of the lock. Gives why that or any write
    /// before it failed.
    Fault finish();

    /// Traces that were in the dataset when it was opened to append or overwrite.
    std::int64_t traces_before() const { return traces_before_; }

private:
    bool create(const TraceHeaderDefinition& definition);
    bool create_parts(const TraceHeaderDefinition& definition);
    bool take_up();
    bool open_pair(std::int64_t trace);
    bool next_pair();
    Fault close_pair();
    Fault flush();
    bool fail(const char* what, const std::string& file, const Fault& fault) const;
    bool fail_to_place(const Fault& fault) const;
    void delete_parts(const NativeMain& parts, const NativeMain& keep) const;

    Target target_;
    const Reporter* report_ = nullptr;  // from open() on
    NativePlaces places_;
    NativeLayout layout_;
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

/// Removes what writers that were killed left in the data directories: main files that were to take
/// their places, and those of their parts that no other main file there lists. Nothing of a writer
/// that is alive, here or on another machine, and no part that is merely unlisted: its main file
/// may be elsewhere.
void remove_abandoned_datasets(const NativePlaces& places, const Reporter& report);

}  // namespace halvern
