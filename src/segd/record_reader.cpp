#include "segd/record_reader.h"

#include <algorithm>
#include <array>
#include <functional>

#include "segd/samples.h"

namespace halvern::segd {

using Status = BlockSource::Status;

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
    file_number_ = header_.file_number();
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
    const bool filler = source_.marks_blocks() &&
                        std::ranges::adjacent_find(bytes, std::not_equal_to<>()) == bytes.end();
    if (!filler) left_over_ += static_cast<std::int64_t>(bytes.size());
    stream_.drop(bytes.size());
    return bytes.size();
}

int RecordReader::skip_file() {
    const bool behind_filemark = streaming_ && stream_.end() == Status::kNoData;
    in_record_ = false;
    pending_ = {};
    ends_in_a_row_ = 1;
    if (streaming_) stream_.restart();
    return behind_filemark ? 0 : source_.skip_file();
}

RecordReader::Next RecordReader::next_trace() {
    if (!in_record_) return Next::kEndOfRecord;
    return streaming_ ? next_in_stream() : next_in_block();
}

// A trace header that belongs here: of this record, of a set that the record has.
bool RecordReader::is_plausible(std::span<const std::byte> bytes) const {
    if (bytes.size() < TraceHeader::kSize) return false;
    const std::optional<TraceHeader> header =
        TraceHeader::parse(bytes.first<TraceHeader::kSize>(), layout_.revision_0());
    if (!header || header->trace_number < 1) return false;
    if (!header->file_extended && header->file_number != header_.file_number() &&
        header->file_number != file_number_) {
        return false;
    }
    const auto fits = [&](const ChannelSet& set) {
        return set.number == header->channel_set && set.scan_type == header->scan_type &&
               set.channels > 0 && (all_announced() || header->trace_number <= set.channels);
    };
    // Most often it is the set of the last trace, or the next one.
    const std::vector<ChannelSet>& sets = header_.sets();
    return fits(sets[set_]) || (set_ + 1 < sets.size() && fits(sets[set_ + 1])) ||
           std::ranges::any_of(sets, fits);
}

bool RecordReader::begins_record(std::span<const std::byte> bytes) const {
    return bytes.size() >= GeneralHeader1::kSize &&
           GeneralHeader1::plausible(bytes.first<GeneralHeader1::kSize>()) && !is_plausible(bytes);
}

// The set that the header names, else the one whose turn it is.
const ChannelSet* RecordReader::set_of(const TraceHeader& header) {
    const std::vector<ChannelSet>& sets = header_.sets();
    if (left_in_set_ == 0) {
        std::size_t next = set_ + 1;
        while (next < sets.size() && sets[next].channels == 0) ++next;
        if (next < sets.size()) {
            set_ = next;
            left_in_set_ = sets[set_].channels;
        }
    }
    const auto named = [&](const ChannelSet& set) {
        return set.channels > 0 && set.number == header.channel_set &&
               set.scan_type == header.scan_type;
    };
    if (!named(sets[set_])) {
        const auto found = std::ranges::find_if(sets, named);
        if (found != sets.end()) {
            set_ = static_cast<std::size_t>(found - sets.begin());
            left_in_set_ = std::max(sets[set_].channels - header.trace_number + 1, 1);
        }
    }
    left_in_set_ = std::max<std::int64_t>(left_in_set_ - 1, 0);
    return &sets[set_];
}

// Reads the header that `bytes` begin with, and its first extension; nothing when they are not
// whole.
std::optional<TraceHeader> RecordReader::start_trace(std::span<const std::byte> bytes) {
    trace_ = {.sequence = sequence_};
    std::optional<TraceHeader> header;
    if (bytes.size() >= TraceHeader::kSize) {
        header = TraceHeader::parse(bytes.first<TraceHeader::kSize>(), layout_.revision_0());
    }
    const std::size_t extensions =
        header ? static_cast<std::size_t>(header->extensions) * kBlockBytes : 0;
    if (!header || bytes.size() < TraceHeader::kSize + extensions) {
        left_in_set_ = std::max<std::int64_t>(left_in_set_ - 1, 0);
        return {};
    }
    const bool unnumbered = header->file_extended && header->file_number == 0;
    if (!unnumbered && header->file_number != header_.file_number()) ++foreign_file_numbers_;
    file_number_ = header->file_number;
    trace_.header = *header;
    trace_.set = set_of(*header);
    trace_.set_index = set_;
    trace_.extensions = bytes.subspan(TraceHeader::kSize, extensions);
    if (extensions > 0) {
        trace_.receiver = TraceHeaderExtension1::parse(trace_.extensions.first<kBlockBytes>());
    }
    return header;
}

// A trace that is due and cannot be told: the channels go on behind it.
void RecordReader::lose_trace() {
    ++sequence_;
    left_in_set_ = std::max<std::int64_t>(left_in_set_ - 1, 0);
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
    const int format = header_.general().format;
    const std::int64_t there = samples_in(format, data_bytes);
    const std::int64_t intervals = header_.intervals(*trace_.set);
    const bool timed = claimed == intervals || claimed == intervals + 1;
    if (claimed > 0 && there > 0 && (claimed <= there || timed)) return claimed;
    // The last group of 8015 may hold fewer samples than it has room for.
    const std::int64_t expected = expected_samples(*trace_.set);
    return bytes_of(format, expected) == data_bytes ? expected : there;
}

RecordReader::Next RecordReader::next_in_stream() {
    const std::span<const std::byte> ahead = stream_.front(GeneralHeader1::kSize);
    if (ahead.empty() && stream_.end() == Status::kReadError) {
        stream_.restart();
        lose_trace();
        if (!skip_to_plausible()) finish_record();
        return Next::kReadError;
    }
    if (ahead.empty() || begins_record(ahead)) {
        in_record_ = false;
        return Next::kEndOfRecord;
    }
    if (!is_plausible(ahead)) {
        if (!all_announced()) {
            lose_trace();
            if (!skip_to_plausible()) finish_record();
            return Next::kBadHeader;
        }
        // Trailers, and behind them another record, the end, or nothing that can be told.
        const std::span<const std::byte> trailer = stream_.front(trailer_bytes());
        if (trailer.size() == trailer_bytes()) trailer_.assign(trailer.begin(), trailer.end());
        stream_.drop(trailer_.size());
        const auto at_record = [this] {
            return begins_record(stream_.front(GeneralHeader1::kSize));
        };
        while (!at_record()) {
            const std::size_t distance = stream_.to_next_block();
            if (distance == 0) break;
            pass_over(distance);
        }
        if (at_record()) in_record_ = false;
        finish_record();
        return Next::kEndOfRecord;
    }

    const auto header = TraceHeader::parse(ahead.first<TraceHeader::kSize>(), layout_.revision_0());
    const std::size_t lead =
        TraceHeader::kSize + static_cast<std::size_t>(header->extensions) * kBlockBytes;
    const std::span<const std::byte> start = stream_.front(lead);
    ++sequence_;
    if (!start_trace(start)) {
        stream_.drop(start.size());
        return Next::kBadHeader;
    }
    trace_.extensions = {};
    const Extent extent = extent_in_stream(trace_.receiver ? trace_.receiver->samples : 0, lead);
    const std::size_t length = lead + static_cast<std::size_t>(extent.bytes);
    const std::span<const std::byte> whole = stream_.front(length);
    const bool lost = whole.size() < length && stream_.end() == Status::kReadError;
    stream_.drop(whole.size());
    if (whole.size() <= lead || extent.samples == 0 || lost) return Next::kBadTrace;
    trace_.bytes = whole;
    trace_.extensions = whole.subspan(TraceHeader::kSize, lead - TraceHeader::kSize);
    trace_.raw = whole.subspan(lead);
    trace_.samples = static_cast<int>(extent.samples);
    learn(extent.samples);
    return Next::kTrace;
}

// Whether a trace, a record, a trailer or the end stands `bytes` bytes ahead.
bool RecordReader::something_follows(std::size_t bytes) {
    const std::span<const std::byte> ahead = stream_.front(bytes + GeneralHeader1::kSize);
    if (ahead.size() < bytes) return false;
    const std::span<const std::byte> next = ahead.subspan(bytes);
    if (next.empty() || is_plausible(next) || begins_record(next)) return true;
    const std::size_t trailer = trailer_bytes();
    return trailer > 0 && stream_.front(bytes + trailer + 1).size() == bytes + trailer;
}

// Which of the counts that the headers give is the one that fits what stands behind the trace.
RecordReader::Extent RecordReader::extent_in_stream(std::int64_t claimed, std::size_t lead) {
    const int format = header_.general().format;
    const std::int64_t expected = expected_samples(*trace_.set);
    const std::int64_t intervals = header_.intervals(*trace_.set);
    const std::array counts = {claimed, expected, 2 * intervals + 1 - expected};
    Extent first;
    Extent whole;
    for (const std::int64_t samples : counts) {
        for (const bool cut_group : {false, true}) {
            if (samples <= 0) continue;
            const Extent extent{samples, bytes_of(format, samples, cut_group)};
            const std::size_t length = lead + static_cast<std::size_t>(extent.bytes);
            if (something_follows(length)) return extent;
            if (first.samples == 0) first = extent;
            if (whole.samples == 0 && stream_.front(length).size() == length) whole = extent;
        }
    }
    return whole.samples > 0 ? whole : first;
}

// To the next tape block that begins with a trace of this record, or with a record. False, with the
// stream at its end, when there is none.
bool RecordReader::skip_to_plausible() {
    std::span<const std::byte> ahead = stream_.front(GeneralHeader1::kSize);
    while (!is_plausible(ahead) && !begins_record(ahead)) {
        const std::size_t distance = stream_.to_next_block();
        if (distance == 0) return false;
        stream_.drop(distance);
        ahead = stream_.front(GeneralHeader1::kSize);
    }
    return true;
}

}  // namespace halvern::segd
