#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "segd/block_source.h"
#include "segd/block_stream.h"
#include "segd/record_header.h"
#include "segd/trace_header.h"

namespace halvern::segd {

/// One trace of a record. Its spans stay until the reader's next call.
struct Trace {
    const ChannelSet* set = nullptr;
    std::size_t set_index = 0;
    TraceHeader header{};
    std::optional<TraceHeaderExtension1> receiver;
    std::span<const std::byte> bytes;       ///< everything: header, extensions and samples
    std::span<const std::byte> extensions;  ///< 32 bytes each
    std::span<const std::byte> raw;         ///< samples as recorded; may end before the last one
    int samples = 0;
    int sequence = 0;  ///< place in the record, from 1
};

/// Reads records trace by trace from tape blocks or from a stream of bytes: each trace in a block
/// of its own, or many packed into large blocks, or on disk with no blocks at all.
class RecordReader {
public:
    /// `blocked`: traces do not begin with a block each. A tape that turns out to be blocked is
    /// read so in either case.
    RecordReader(BlockSource& source, Dialect dialect, bool blocked)
        : source_(source), dialect_(dialect), stream_(source), streaming_(blocked) {}

    enum class Record {
        kRecord,
        kEnd,        ///< two ends in a row: nothing more is recorded
        kReadError,  ///< the header cannot be read
        kFault,      ///< it can, and fault() says what is wrong with it
    };
    /// Reads the next record's header; what is left of the record before is passed over. After
    /// kReadError and kFault the tape is somewhere in the file: skip_file() goes on.
    Record next_record();
    /// To after the next filemark. 0, or -1 when there is none.
    [[nodiscard]] int skip_file();

    enum class Next {
        kTrace,
        kEndOfRecord,
        kReadError,  ///< a block is lost; the next call goes on after it
        kBadHeader,  ///< no trace header where one is due; trace().sequence is its number
        kBadTrace,   ///< a header, with no samples after it
    };
    Next next_trace();

    const RecordHeader& header() const { return header_; }
    /// The header that next_record read, as far as it got: where fault() is kFormat or kChannelSet,
    /// its general header is there.
    const HeaderLayout& layout() const { return layout_; }
    HeaderFault fault() const { return fault_; }
    const Trace& trace() const { return trace_; }
    /// Traces of this record so far, those that failed included.
    int sequence() const { return sequence_; }
    /// Whether the last trace came where its numbers place it.
    bool in_order() const { return in_order_; }
    /// The storage unit label that was found before this record; empty: none.
    std::span<const std::byte> label() const { return label_; }
    /// The trailer blocks after the last trace of a stream, and how many bytes besides were passed
    /// over because nothing can be told about them; on tape, without what merely fills a block up.
    std::span<const std::byte> trailer() const { return trailer_; }
    std::int64_t left_over() const { return left_over_; }
    /// Whether a tape that was said not to be blocked is.
    bool found_blocked() const { return found_blocked_; }
    /// Traces so far whose file number is not the record's.
    std::int64_t foreign_file_numbers() const { return foreign_file_numbers_; }

    /// Samples that a trace of this set should have by the descriptor's times, with the count of
    /// ends that this tape's traces have shown so far.
    std::int64_t expected_samples(const ChannelSet& set) const {
        return header_.intervals(set) + (counts_both_ends_.value_or(true) ? 1 : 0);
    }

private:
    Record begin_record(std::span<const std::byte> block);
    void finish_record();
    std::size_t pass_over(std::size_t count);
    Next next_in_block();
    Next next_in_stream();
    Next trace_in_stream();
    Next end_of_stream();
    bool resynchronise(bool lost);

    /// How a record's trace headers name their record and sets and count, where that is not as the
    /// standard has it.
    struct Habits {
        int file_number = 0;
        int foreign_set = -1;  // a set that the record does not have; -1: none
        bool running = false;  // trace numbers run through all sets
    };
    /// Of a trace's header with its extensions.
    static std::size_t lead_of(const TraceHeader& header) {
        return TraceHeader::kSize + static_cast<std::size_t>(header.extensions) * kBlockBytes;
    }
    std::optional<TraceHeader> parse(std::span<const std::byte> bytes) const;
    bool fits(const TraceHeader& header) const;
    bool is_plausible(std::span<const std::byte> bytes) const {
        const std::optional<TraceHeader> header = parse(bytes);
        return header && fits(*header);
    }
    bool adopt();
    bool is_followed();
    bool holds_more(std::span<const std::byte> block) const;
    bool begins_record(std::span<const std::byte> bytes) const;
    bool all_announced() const { return sequence_ >= header_.traces(); }
    std::size_t set_of(const TraceHeader& header) const;
    std::size_t set_due() const;
    void take_turn();
    std::int64_t place_of(const TraceHeader& header) const;
    std::optional<TraceHeader> start_trace(std::span<const std::byte> bytes);
    void lose_trace();
    void learn(std::int64_t samples);
    std::size_t trailer_bytes() const {
        return static_cast<std::size_t>(header_.trailer_blocks()) * kBlockBytes;
    }

    std::int64_t samples_of_block(std::int64_t claimed, std::int64_t data_bytes) const;
    struct Extent {
        std::int64_t samples = 0;
        std::size_t bytes = 0;  // of the whole trace
        bool followed = false;  // by a trace, a record or the end
    };
    static constexpr std::size_t kExtents = 6;
    std::array<Extent, kExtents> extents(std::span<const std::byte> start,
                                         const ChannelSet& set) const;
    Extent extent_in_stream(std::span<const std::byte> start, const ChannelSet& set);
    bool something_follows(std::size_t bytes);

    BlockSource& source_;
    const Dialect dialect_;
    BlockStream stream_;
    bool streaming_;
    bool found_blocked_ = false;

    HeaderLayout layout_{};
    RecordHeader header_;
    HeaderFault fault_ = HeaderFault::kNone;
    std::vector<std::byte> label_;
    std::vector<std::byte> trailer_;
    std::int64_t left_over_ = 0;
    Trace trace_;
    int sequence_ = 0;
    Habits habits_;
    bool in_order_ = true;
    std::size_t set_ = 0;  // of the last trace, in header().sets()
    std::int64_t left_in_set_ = 0;
    std::optional<bool> counts_both_ends_;  // samples = intervals + 1
    std::int64_t foreign_file_numbers_ = 0;

    std::span<const std::byte> pending_;  // a block that begins the next record
    bool in_record_ = false;              // the record's end has not been met
    int ends_in_a_row_ = 0;               // filemarks since the last block
};

}  // namespace halvern::segd
