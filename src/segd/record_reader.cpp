#include "segd/record_reader.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace halvern::segd {

using Status = BlockSource::Status;

namespace {

// Equal bytes, such as fill a tape block up.
bool is_filler(std::span<const std::byte> bytes) {
    return std::ranges::adjacent_find(bytes, std::not_equal_to<>()) == bytes.end();
}

}  // namespace

RecordReader::Record RecordReader::next_record() {
    constexpr int kEndsOfData = 2;
    finish_record();
    label_.clear();
    for (;;) {
        std::span<const std::byte> block;
        Status status = Status::kBlock;
        if (streaming_) {
            block = stream_.front(StorageUnitLabel::kSize);
            if (block.empty()) {
                status = stream_.end();
                stream_.restart();
            }
        } else if (!pending_.empty()) {
            block = std::exchange(pending_, {});
        } else {
            status = source_.next(block);
        }
        if (status == Status::kReadError) return Record::kReadError;
        if (status == Status::kNoData) {
            if (++ends_in_a_row_ >= kEndsOfData) return Record::kEnd;
            continue;
        }
        ends_in_a_row_ = 0;
        if (!StorageUnitLabel::is_one(block)) return begin_record(block);
        label_.assign(block.begin(), block.begin() + StorageUnitLabel::kSize);
        if (streaming_)
            stream_.drop(StorageUnitLabel::kSize);
        else
            pending_ = block.subspan(StorageUnitLabel::kSize);
    }
}

RecordReader::Record RecordReader::begin_record(std::span<const std::byte> block) {
    const auto front = [&](std::size_t count) { return streaming_ ? stream_.front(count) : block; };
    trace_ = {};
    trailer_.clear();
    sequence_ = 0;
    left_over_ = 0;
    set_ = 0;
    in_record_ = true;
    fault_ = HeaderLayout::parse(front(HeaderLayout::kMostGeneralBytes), dialect_, layout_);
    if (fault_ != HeaderFault::kNone) return Record::kFault;
    const auto length = static_cast<std::size_t>(layout_.bytes());
    const std::span<const std::byte> whole = front(length);
    if (whole.size() < length) {
        const bool lost = streaming_ && stream_.end() == Status::kReadError;
        fault_ = HeaderFault::kGeneralHeader;
        return lost ? Record::kReadError : Record::kFault;
    }
    fault_ = header_.parse(layout_, whole.first(length));
    if (fault_ != HeaderFault::kNone) return Record::kFault;
    habits_ = {.file_number = header_.file_number()};
    in_order_ = true;
    while (header_.sets()[set_].channels == 0) ++set_;
    left_in_set_ = header_.sets()[set_].channels;
    if (streaming_) {
        stream_.drop(length);
    } else if (is_plausible(whole.subspan(length))) {
        streaming_ = found_blocked_ = true;
        stream_.restart();
        stream_.push(whole.subspan(length));
    }
    return Record::kRecord;
}

// What is left of a record is read, not spaced over: the data may end without a filemark.
void RecordReader::finish_record() {
    constexpr std::size_t kPiece = 64 * 1024;
    while (in_record_) {
        Status status = Status::kBlock;
        if (streaming_) {
            if (pass_over(kPiece) > 0) continue;
            status = stream_.end();
            stream_.restart();
        } else {
            std::span<const std::byte> block;
            status = source_.next(block);
        }
        if (status != Status::kNoData) continue;
        ends_in_a_row_ = 1;
        in_record_ = false;
    }
}

// Drops up to `count` bytes of a stream of which nothing can be told, and gives how many there
// were. What fills a tape block up is left over from nothing.
std::size_t RecordReader::pass_over(std::size_t count) {
    const std::span<const std::byte> bytes = stream_.front(count);
    if (!source_.marks_blocks() || !is_filler(bytes))
        left_over_ += static_cast<std::int64_t>(bytes.size());
    stream_.drop(bytes.size());
    return bytes.size();
}

int RecordReader::skip_file() {
    const bool after_filemark = streaming_ && stream_.end() == Status::kNoData;
    in_record_ = false;
    pending_ = {};
    ends_in_a_row_ = 1;
    if (streaming_) stream_.restart();
    return after_filemark ? 0 : source_.skip_file();
}

RecordReader::Next RecordReader::next_trace() {
    if (!in_record_) return Next::kEndOfRecord;
    return streaming_ ? next_in_stream() : next_in_block();
}

std::optional<TraceHeader> RecordReader::parse(std::span<const std::byte> bytes) const {
    if (bytes.size() < TraceHeader::kSize) return {};
    return TraceHeader::parse(bytes.first<TraceHeader::kSize>(), layout_.revision_0());
}

// Whether the header belongs here: to this record, and to a set that the record has.
bool RecordReader::fits(const TraceHeader& header) const {
    if (header.trace_number < 1) return false;
    if (!header.file_extended && header.file_number != header_.file_number() &&
        header.file_number != habits_.file_number) {
        return false;
    }
    const auto counts = [&](int channels) {
        const std::int64_t most = habits_.running ? header_.traces() : channels;
        return all_announced() || header.trace_number <= most;
    };
    const auto fits_set = [&](const ChannelSet& set) {
        return set.number == header.channel_set && set.scan_type == header.scan_type &&
               set.channels > 0 && counts(set.channels);
    };
    // Most often it is the set of the last trace, or the next one.
    const std::vector<ChannelSet>& sets = header_.sets();
    if (fits_set(sets[set_]) || (set_ + 1 < sets.size() && fits_set(sets[set_ + 1]))) return true;
    if (habits_.foreign_set >= 0 && header.channel_set == habits_.foreign_set) {
        return counts(sets[set_due()].channels);
    }
    return std::ranges::any_of(sets, fits_set);
}

bool RecordReader::begins_record(std::span<const std::byte> bytes) const {
    return bytes.size() >= GeneralHeader1::kSize &&
           GeneralHeader1::plausible(bytes.first<GeneralHeader1::kSize>()) && !is_plausible(bytes);
}

// The set whose turn it is.
std::size_t RecordReader::set_due() const {
    const std::vector<ChannelSet>& sets = header_.sets();
    if (left_in_set_ > 0) return set_;
    std::size_t next = set_ + 1;
    while (next < sets.size() && sets[next].channels == 0) ++next;
    return next < sets.size() ? next : set_;
}

void RecordReader::take_turn() {
    if (const std::size_t due = set_due(); due != set_) {
        set_ = due;
        left_in_set_ = header_.sets()[set_].channels;
    }
    left_in_set_ = std::max<std::int64_t>(left_in_set_ - 1, 0);
}

// The set that the header names, else the one whose turn it is.
std::size_t RecordReader::set_of(const TraceHeader& header) const {
    const std::vector<ChannelSet>& sets = header_.sets();
    const auto named = [&](const ChannelSet& set) {
        return set.channels > 0 && set.number == header.channel_set &&
               set.scan_type == header.scan_type;
    };
    const std::size_t due = set_due();
    if (named(sets[due])) return due;
    const auto found = std::ranges::find_if(sets, named);
    return found == sets.end() ? due : static_cast<std::size_t>(found - sets.begin());
}

// The place in the record, from 1, that its numbers give a trace.
std::int64_t RecordReader::place_of(const TraceHeader& header) const {
    if (habits_.running) return header.trace_number;
    std::int64_t place = header.trace_number;
    for (std::size_t set = set_of(header); set-- > 0;) place += header_.sets()[set].channels;
    return place;
}

// Reads the header that `bytes` begin with, and its first extension; nothing when they are not
// whole.
std::optional<TraceHeader> RecordReader::start_trace(std::span<const std::byte> bytes) {
    trace_ = {.sequence = sequence_};
    const std::optional<TraceHeader> header = parse(bytes);
    const std::size_t extensions =
        header ? static_cast<std::size_t>(header->extensions) * kBlockBytes : 0;
    if (!header || bytes.size() < TraceHeader::kSize + extensions) {
        take_turn();
        return {};
    }
    const std::size_t set = set_of(*header);
    if (std::int64_t place = place_of(*header); place != sequence_ && !habits_.running) {
        // The first trace of a later set, with a number that goes on from the set before.
        habits_.running = header->trace_number == sequence_ && sequence_ > 1 &&
                          place == 2 * std::int64_t{sequence_} - 1;
    }
    in_order_ = place_of(*header) == sequence_;
    const bool unnumbered = header->file_extended && header->file_number == 0;
    if (!unnumbered && header->file_number != header_.file_number()) ++foreign_file_numbers_;
    habits_.file_number = header->file_number;
    take_turn();
    if (set != set_) {
        set_ = set;
        left_in_set_ = std::max(header_.sets()[set].channels - header->trace_number, 0);
    }
    trace_.header = *header;
    trace_.set = &header_.sets()[set];
    trace_.set_index = set;
    trace_.extensions = bytes.subspan(TraceHeader::kSize, extensions);
    if (extensions > 0) {
        trace_.receiver = TraceHeaderExtension1::parse(trace_.extensions.first<kBlockBytes>());
    }
    return header;
}

// A trace that is due and cannot be told: the channels go on after it.
void RecordReader::lose_trace() {
    ++sequence_;
    take_turn();
    trace_ = {.sequence = sequence_};
}

void RecordReader::learn(std::int64_t samples) {
    const std::int64_t intervals = header_.intervals(*trace_.set);
    if (samples == intervals + 1) counts_both_ends_ = true;
    if (samples == intervals) counts_both_ends_ = false;
}

RecordReader::Next RecordReader::next_in_block() {
    for (;;) {
        std::span<const std::byte> block;
        switch (source_.next(block)) {
            case Status::kReadError:
                lose_trace();
                return Next::kReadError;
            case Status::kNoData:
                ends_in_a_row_ = 1;
                in_record_ = false;
                return Next::kEndOfRecord;
            case Status::kBlock:
                break;
        }
        if (begins_record(block)) {  // the filemark between two records is missing
            pending_ = block;
            in_record_ = false;
            return Next::kEndOfRecord;
        }
        const std::size_t trailer = trailer_bytes();
        if (holds_more(block)) {
            streaming_ = found_blocked_ = true;
            stream_.restart();
            stream_.push(block);
            return next_in_stream();
        }
        const bool may_be_trailer = all_announced() || (trailer > 0 && block.size() == trailer);
        if (may_be_trailer && !is_plausible(block)) continue;

        ++sequence_;
        const std::optional<TraceHeader> header = start_trace(block);
        if (!header) return Next::kBadHeader;
        trace_.bytes = block;
        trace_.raw = block.subspan(TraceHeader::kSize + trace_.extensions.size());
        const std::int64_t claimed = trace_.receiver ? trace_.receiver->samples : 0;
        const std::int64_t samples =
            samples_of_block(claimed, static_cast<std::int64_t>(trace_.raw.size()));
        if (samples == 0) return Next::kBadTrace;
        trace_.samples = static_cast<int>(samples);
        learn(samples);
        return Next::kTrace;
    }
}

// The claim of the first extension counts when the block holds it, or is merely cut short of what
// the times say, too; otherwise the block's length decides.
std::int64_t RecordReader::samples_of_block(std::int64_t claimed, std::int64_t data_bytes) const {
    const SampleFormat format = header_.format();
    const std::int64_t there = samples_in(format, data_bytes);
    const std::int64_t intervals = header_.intervals(*trace_.set);
    const bool timed = claimed == intervals || claimed == intervals + 1;
    if (claimed > 0 && there > 0 && (claimed <= there || timed)) return claimed;
    // The last group of 8015 may hold fewer samples than it has room for.
    const std::int64_t expected = expected_samples(*trace_.set);
    return bytes_of(format, expected) == data_bytes ? expected : there;
}

RecordReader::Next RecordReader::next_in_stream() {
    for (;;) {
        const std::span<const std::byte> ahead = stream_.front(GeneralHeader1::kSize);
        const bool lost_block = ahead.empty() && stream_.end() == Status::kReadError;
        if (!lost_block) {
            if (ahead.empty() || begins_record(ahead)) {
                in_record_ = false;
                return Next::kEndOfRecord;
            }
            if (is_plausible(ahead) || adopt()) return trace_in_stream();
            if (all_announced()) return end_of_stream();
        }
        // What is lost, or no trace: how many traces are gone shows in the number of the next one.
        const int due = sequence_ + 1;
        if (lost_block) stream_.restart();
        const bool found = resynchronise(lost_block);
        if (found && in_order_) {
            const auto header = parse(stream_.front(TraceHeader::kSize));
            const std::int64_t place = header && fits(*header) ? place_of(*header) : 0;
            while (place <= header_.traces() && sequence_ + 1 < place) lose_trace();
        } else if (lost_block && !all_announced()) {
            lose_trace();
        }
        trace_ = {.sequence = due};
        if (lost_block) return Next::kReadError;
        if (sequence_ >= due) return Next::kBadHeader;
    }
}

// After the last trace that was announced: trailers, and after them another record, the end, or
// nothing that can be told.
RecordReader::Next RecordReader::end_of_stream() {
    const std::span<const std::byte> trailer = stream_.front(trailer_bytes());
    if (trailer.size() == trailer_bytes()) trailer_.assign(trailer.begin(), trailer.end());
    stream_.drop(trailer_.size());
    const auto at_record = [this] { return begins_record(stream_.front(GeneralHeader1::kSize)); };
    while (!at_record()) {
        const std::size_t distance = stream_.to_next_block();
        if (distance == 0) break;
        pass_over(distance);
    }
    if (at_record()) in_record_ = false;
    finish_record();
    return Next::kEndOfRecord;
}

RecordReader::Next RecordReader::trace_in_stream() {
    const TraceHeader header = *parse(stream_.front(TraceHeader::kSize));
    const std::size_t lead = lead_of(header);
    const std::span<const std::byte> start = stream_.front(lead);
    ++sequence_;
    if (!start_trace(start)) {
        stream_.drop(start.size());
        return Next::kBadHeader;
    }
    trace_.extensions = {};
    const Extent extent = extent_in_stream(start, *trace_.set);
    const std::span<const std::byte> whole = stream_.front(extent.bytes);
    const bool lost = whole.size() < extent.bytes && stream_.end() == Status::kReadError;
    stream_.drop(whole.size());
    if (whole.size() <= lead || extent.samples == 0 || lost) return Next::kBadTrace;
    trace_.bytes = whole;
    trace_.extensions = whole.subspan(TraceHeader::kSize, lead - TraceHeader::kSize);
    trace_.raw = whole.subspan(lead);
    trace_.samples = static_cast<int>(extent.samples);
    learn(extent.samples);
    return Next::kTrace;
}

// Whether a trace, a record, a trailer or the end comes `bytes` bytes ahead.
bool RecordReader::something_follows(std::size_t bytes) {
    const std::span<const std::byte> ahead = stream_.front(bytes + GeneralHeader1::kSize);
    if (ahead.size() < bytes) return false;
    const std::span<const std::byte> next = ahead.subspan(bytes);
    if (next.empty() || is_plausible(next) || begins_record(next)) return true;
    const std::size_t trailer = trailer_bytes();
    return trailer > 0 && stream_.front(bytes + trailer + 1).size() == bytes + trailer;
}

// What a trace that begins with `start`, its header and extensions, may take by what the headers
// say: the extension's count, the one that the set's times give, and the one that they give to
// those who count the ends another way.
std::array<RecordReader::Extent, RecordReader::kExtents> RecordReader::extents(
    std::span<const std::byte> start, const ChannelSet& set) const {
    std::int64_t claimed = 0;
    if (start.size() >= TraceHeader::kSize + kBlockBytes) {
        claimed =
            TraceHeaderExtension1::parse(start.subspan(TraceHeader::kSize).first<kBlockBytes>())
                .samples;
    }
    const std::int64_t expected = expected_samples(set);
    const std::int64_t counts[] = {claimed, expected, 2 * header_.intervals(set) + 1 - expected};
    std::array<Extent, kExtents> extents{};
    for (std::size_t i = 0; i < kExtents; ++i) {
        const std::int64_t samples = std::max<std::int64_t>(counts[i / 2], 0);
        const std::int64_t bytes = bytes_of(header_.format(), samples, i % 2 == 1);
        extents[i] = {.samples = samples, .bytes = start.size() + static_cast<std::size_t>(bytes)};
    }
    return extents;
}

// Which of those is the one that fits what comes after the trace; where none does, the block's
// length may.
RecordReader::Extent RecordReader::extent_in_stream(std::span<const std::byte> start,
                                                    const ChannelSet& set) {
    const std::size_t lead = start.size();
    Extent first, whole;
    for (Extent extent : extents(start, set)) {
        if (extent.samples == 0) continue;
        extent.followed = something_follows(extent.bytes);
        if (extent.followed) return extent;
        if (first.samples == 0) first = extent;
        if (whole.samples == 0 && stream_.front(extent.bytes).size() == extent.bytes) {
            whole = extent;
        }
    }
    std::size_t block = stream_.at_block_start() ? stream_.to_next_block() : 0;
    if (block == 0 && stream_.at_block_start()) block = stream_.rest_of_file();
    if (block > lead && something_follows(block)) {
        const auto data = static_cast<std::int64_t>(block - lead);
        const std::int64_t samples = samples_in(header_.format(), data);
        const std::span<const std::byte> rest =
            stream_.front(block).subspan(std::min(whole.bytes, block));
        const bool filled_up = whole.samples > 0 && is_filler(rest);
        if (samples > 0 && !filled_up) {
            return {.samples = samples, .bytes = block, .followed = true};
        }
    }
    return whole.samples > 0 ? whole : first;
}

// Takes what is ahead for a trace although its header does not fit: the file number, the set or the
// numbers are not the record's. It is one all the same when another like it, or the end, follows
// the samples that it announces.
bool RecordReader::adopt() {
    const std::span<const std::byte> ahead = stream_.front(TraceHeader::kSize);
    const std::optional<TraceHeader> header = parse(ahead);
    if (!header || is_filler(ahead) || header->trace_number < 1 || all_announced() ||
        header->trace_number > header_.traces()) {
        return false;
    }
    const ChannelSet& set = header_.sets()[set_of(*header)];
    const Habits before = habits_;
    if (!header->file_extended) habits_.file_number = header->file_number;
    if (set.number != header->channel_set || set.scan_type != header->scan_type) {
        habits_.foreign_set = header->channel_set;
    }
    if (header->trace_number > set.channels) habits_.running = true;
    if (is_followed()) return true;
    habits_ = before;
    return false;
}

// Whether a trace, a record or the end follows the trace whose header is ahead.
bool RecordReader::is_followed() {
    const TraceHeader header = *parse(stream_.front(TraceHeader::kSize));
    const std::span<const std::byte> start = stream_.front(lead_of(header));
    return start.size() == lead_of(header) &&
           extent_in_stream(start, header_.sets()[set_of(header)]).followed;
}

// Whether another trace follows the one that a block begins with: the tape is packed.
bool RecordReader::holds_more(std::span<const std::byte> block) const {
    const std::optional<TraceHeader> header = parse(block);
    if (!header || !fits(*header)) return false;
    const std::size_t lead = lead_of(*header);
    if (block.size() < lead) return false;
    return std::ranges::any_of(
        extents(block.first(lead), header_.sets()[set_of(*header)]), [&](const Extent& extent) {
            return extent.samples > 0 && block.size() >= extent.bytes + TraceHeader::kSize &&
                   is_plausible(block.subspan(extent.bytes));
        });
}

// To where reading can go on: a trace or a record at the start of a tape block; elsewhere the trace
// that is due, or a later one that something follows. False, at the end of the stream, when there
// is none. What is passed over counts as left over unless a `lost` block explains it.
bool RecordReader::resynchronise(bool lost) {
    constexpr std::size_t kWindow = 64 * 1024;
    const auto place = [this](std::span<const std::byte> bytes) {
        const std::optional<TraceHeader> header = parse(bytes);
        return header && fits(*header) ? place_of(*header) : 0;
    };
    for (bool at_block = true;;) {
        std::span<const std::byte> ahead = stream_.front(GeneralHeader1::kSize);
        if (ahead.empty()) return false;
        const std::int64_t here = place(ahead);
        if (here > 0 ? at_block || here == sequence_ + 1 || is_followed() : begins_record(ahead)) {
            return true;
        }
        const std::size_t distance = stream_.to_next_block();
        const std::size_t reach = distance > 0 ? distance : kWindow;
        ahead = stream_.front(reach + TraceHeader::kSize - 1);
        std::size_t at = 1;
        while (at < std::min(reach, ahead.size()) && place(ahead.subspan(at)) <= sequence_) ++at;
        at = std::min(at, ahead.size());
        at_block = at == distance;
        if (lost)
            stream_.drop(at);
        else
            pass_over(at);
    }
}

}  // namespace halvern::segd
