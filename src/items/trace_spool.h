#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/input_file.h"
#include "trace/header_definition.h"
#include "trace/samples.h"

namespace halvern {

/// Traces set down in a scratch file, to be taken up again in another order: first all are written,
/// then any are read. What comes back is what was set down, bit for bit: a record that nobody had
/// worked on as it was read, else the floats. Memory stays at one block, however much data there
/// is. Where the system lets an open file be removed, the file has no name from the start, so
/// nothing can leave it behind; elsewhere it goes with the spool or, at the latest, with the job.
class TraceSpool {
public:
    /// Where a trace is in the file. Offsets ascend in the order of writing.
    struct Place {
        std::int64_t offset = 0;
        std::int64_t bytes = 0;
    };

    /// Memory for traces on their way to and from the file; more only for a trace beyond it.
    static constexpr std::size_t kBlockBytes = std::size_t{64} << 20;
    /// Traces that one load brings in at most.
    static constexpr std::size_t kBlockTraces = 65536;

    TraceSpool() = default;
    ~TraceSpool() { close(); }
    TraceSpool(const TraceSpool&) = delete;
    TraceSpool& operator=(const TraceSpool&) = delete;

    // What can fail answers 0 or -1, and error() then says what happened.

    /// Makes the scratch file, anew when there is one. Traces are written after every
    /// `traces_per_write`, or when the block is full.
    [[nodiscard]] int open(int traces_per_write);
    /// Sets a trace down: the header image that is attached, and the samples.
    [[nodiscard]] int append(const TraceHeaderDefinition& header, TraceSamples& samples,
                             Place& place);
    /// After the last append: everything is in the file.
    [[nodiscard]] int finish_writing();

    /// Brings as many of the places as fit into memory, from the first one on, touching the file in
    /// ascending order. `loaded` is at least 1, unless there are no places.
    [[nodiscard]] int load(std::span<const Place> places, std::size_t& loaded);
    /// The i'th place of the last load: attaches its header image and fills in the samples, both
    /// borrowed from the block. Once for every load and place, as the image may be changed.
    void take_up(std::size_t i, TraceHeaderDefinition& header, TraceSamples& samples);

    /// Closes and removes the file and gives the memory back.
    void close();

    const std::string& error() const { return error_; }

private:
    int fail(const char* what);
    int write_block();
    void make_room(std::size_t bytes);

    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };
    std::string name_;
    bool named_ = false;               // whether the file is still in its folder
    std::vector<char> stream_buffer_;  // outlives the stream
    std::unique_ptr<std::FILE, Closer> out_;
    std::optional<InputFile> in_;
    std::int64_t written_ = 0;  // bytes in the file and the block
    int traces_per_write_ = 1;
    int traces_in_block_ = 0;

    std::unique_ptr<std::byte[]> block_;  // [capacity_]
    std::size_t capacity_ = 0;
    std::size_t used_ = 0;
    std::vector<std::uint32_t>
        by_offset_;                      // [places of a load], their indices as the file has them
    std::vector<std::size_t> in_block_;  // [places of a load], where each is in the block
    std::vector<float> worked_;          // samples on their way to a trace
    std::string error_;
};

}  // namespace halvern
