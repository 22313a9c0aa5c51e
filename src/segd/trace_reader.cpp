#include "segd/trace_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "foundation/words.h"

namespace halvern::segd {

using Met = TraceReader::Met;
using Record = RecordReader::Record;
using Next = RecordReader::Next;

namespace {

constexpr int kMostLineSamples = 32767;  // of a line header's 16 bits

constexpr const char* kWords[] = {
    "FFID",    "CHAN",    "CHANSET", "TRACEID",  "DTIME",    "HTIME",   "MTIME",    "STIME",
    "SEQCHAN", "SEQFFID", "SOULINE", "SOUPOINT", "SOUINDEX", "RECLINE", "RECPOINT", "RECINDEX"};

// Multiplies IEEE samples, which know no multiplier of their own, and counts those that are no
// number a float can hold: they become 0.
std::int64_t descale_ieee(std::span<float> samples, double descale) {
    constexpr double kLargest = std::numeric_limits<float>::max();
    std::int64_t bad = 0;
    for (float& sample : samples) {
        const double value = sample * descale;
        const bool fits = std::abs(value) <= kLargest;  // and is not NaN
        bad += fits ? 0 : 1;
        sample = fits ? static_cast<float>(value) : 0.0f;
    }
    return bad;
}

std::int64_t samples_there(const RecordReader& reader) {
    const Trace& trace = reader.trace();
    return std::min<std::int64_t>(
        trace.samples,
        samples_in(reader.header().format(), static_cast<std::int64_t>(trace.raw.size())));
}

GroupBytes groups_of(const RecordHeader& header, const Trace& trace) {
    GroupBytes groups;
    const auto group = [&groups](Group which) -> std::span<const std::byte>& {
        return groups[static_cast<std::size_t>(which)];
    };
    group(Group::kG1) = header.general_block(1);
    if (!header.layout().revision_0()) {
        group(Group::kG2) = header.general_block(2);
        group(Group::kGN) = header.general_block(3);
    }
    group(Group::kCS) = header.descriptor(trace.set_index);
    group(Group::kTH) = trace.bytes.first(TraceHeader::kSize);
    const std::size_t extensions = std::min<std::size_t>(trace.extensions.size() / kBlockBytes, 7);
    for (std::size_t i = 0; i < extensions; ++i) {
        groups[static_cast<std::size_t>(Group::kTE1) + i] =
            trace.extensions.subspan(i * kBlockBytes, kBlockBytes);
    }
    group(Group::kExt) = header.extended();
    group(Group::kXtn) = header.external();
    return groups;
}

}  // namespace

std::size_t line_set(const RecordHeader& header) {
    const std::vector<ChannelSet>& sets = header.sets();
    const auto in_use = [](const ChannelSet& set) { return set.channels > 0; };
    const auto seismic = [&](const ChannelSet& set) {
        return in_use(set) && set.type == ChannelSet::kSeismic;
    };
    auto found = std::ranges::find_if(sets, seismic);
    if (found == sets.end()) found = std::ranges::find_if(sets, in_use);
    return static_cast<std::size_t>(found - sets.begin());
}

bool TraceReader::load(TraceReaderOptions options) {
    options_ = std::move(options);
    definition_.attach(image_.data());
    if (definition_.load(options_.header_path) != 0) return false;
    words_.clear();
    for (const char* name : kWords) words_.push_back(definition_.find(name));
    description_ = Description::read(options_.description_path, definition_);
    return true;
}

TraceReader::Sight TraceReader::look_ahead(bool blocked) {
    constexpr std::int64_t kFarthest = 256 * 1024 * 1024;
    constexpr int kMostLost = 100;  // a tape of bad blocks is not worth more
    RecordReader reader(*source_, options_.dialect, blocked);
    Sight sight{.record = reader.next_record()};
    if (sight.record != Record::kRecord) return sight;
    const std::size_t own = line_set(reader.header());
    bool cut = false;
    int lost = 0;
    for (int steps = 0; source_->remembered() < kFarthest && lost < kMostLost; ++steps) {
        if (sight.samples > 0 && steps >= 2) break;
        const Next next = reader.next_trace();
        if (next == Next::kEndOfRecord) break;
        // A block in which a trace begins, and one that begins with none.
        if (steps == 1) sight.astray = cut && (next != Next::kTrace || !reader.in_order());
        if (next != Next::kTrace) {
            ++lost;
            continue;
        }
        if (steps == 0) {
            const std::int64_t there = samples_there(reader);
            cut = there < reader.trace().samples ||
                  there < reader.header().intervals(*reader.trace().set);
        }
        if (sight.samples == 0 && reader.trace().set_index == own) {
            sight.samples = reader.trace().samples;
        }
    }
    if (sight.samples == 0) {
        sight.samples = reader.expected_samples(reader.header().sets()[own]);
    }
    return sight;
}

Record TraceReader::open(BlockSource& source) {
    source_.emplace(source);
    blocked_ = options_.blocked;
    Sight sight = look_ahead(blocked_);
    if (sight.astray && !blocked_) {
        source_->repeat();
        const Sight packed = look_ahead(true);
        blocked_ = !packed.astray;
        if (blocked_) sight = packed;
    }
    source_->repeat();
    source_->forget();
    records_reader_.emplace(*source_, options_.dialect, blocked_);
    const Record record = records_reader_->next_record();
    if (record != Record::kRecord) return record;
    record_waits_ = true;
    const RecordHeader& header = records().header();
    interval_ = header.sample_interval(header.sets()[line_set(header)]);
    trace_samples_ = sight.samples;
    const std::int64_t kept = options_.trace_length_ms > 0
                                  ? interval_.samples_in(options_.trace_length_ms)
                                  : trace_samples_;
    line_samples_ =
        static_cast<int>(std::min({trace_samples_, kept, std::int64_t{kMostLineSamples}}));
    line_.build_from_definition(options_.header_path, interval_, line_samples_,
                                SampleFormat::kIeee);
    return record;
}

void TraceReader::go_on(BlockSource& source) {
    foreign_numbers_ += records().foreign_file_numbers();
    in_record_ = skip_due_ = false;
    source_.emplace(source);
    source_->forget();
    records_reader_.emplace(*source_, options_.dialect, blocked_);
}

Met TraceReader::next() {
    if (std::exchange(skip_due_, false) && records_reader_->skip_file() != 0) return Met::kNoWayOn;
    if (!in_record_) {
        const Record record =
            std::exchange(record_waits_, false) ? Record::kRecord : records_reader_->next_record();
        in_record_ = record == Record::kRecord;
        skip_due_ = record == Record::kReadError || record == Record::kFault;
        if (record == Record::kReadError) return Met::kLostHeader;
        if (record == Record::kFault) return Met::kBadHeader;
        if (record == Record::kEnd) return trouble().empty() ? Met::kEnd : Met::kNoWayOn;
        ++records_;
        return Met::kRecord;
    }
    switch (records_reader_->next_trace()) {
        case Next::kTrace:
            return take();
        case Next::kReadError:
            return Met::kLostBlock;
        case Next::kBadHeader:
            return Met::kBadTraceHeader;
        case Next::kBadTrace:
            return Met::kBadTrace;
        case Next::kEndOfRecord:
            break;
    }
    in_record_ = false;
    skip_due_ = !trouble().empty();
    return Met::kEndOfRecord;
}

Met TraceReader::take() {
    const Trace& trace = records().trace();
    if (records().header().sample_interval(*trace.set) != interval_) {
        ++other_interval_;
        return Met::kOtherInterval;
    }
    // Longer than a trace length that was asked for is as asked for.
    if (samples_there(records()) < line_samples_ ||
        (trace.samples > line_samples_ && options_.trace_length_ms == 0)) {
        ++other_length_;
    }
    fill_header(trace);
    fill_samples(trace);
    return Met::kTrace;
}

void TraceReader::fill_header(const Trace& trace) {
    const RecordHeader& header = records().header();
    const GeneralHeader1& general = header.general();
    const GeneralHeaderN source =
        header.sources().empty() ? GeneralHeaderN{} : header.sources().front();
    const TraceHeaderExtension1 receiver = trace.receiver.value_or(TraceHeaderExtension1{});
    const auto number = [](std::int64_t value) { return static_cast<double>(value); };
    // In the order of kWords.
    const double values[] = {number(header.file_number()), number(trace.header.trace_number),
                             number(trace.set->number),    number(trace_id_of(trace.set->type)),
                             number(general.day),          number(general.hour),
                             number(general.minute),       number(general.second),
                             number(trace.sequence),       number(records_),
                             source.source_line,           source.source_point,
                             number(source.source_index),  receiver.receiver_line,
                             receiver.receiver_point,      number(receiver.receiver_index)};
    static_assert(std::size(values) == std::size(kWords));
    image_.fill(std::byte{});
    definition_.attach(image_.data());
    for (std::size_t i = 0; i < std::size(values); ++i) {
        definition_.set_double(words_[i], values[i]);
    }
    if (!description_.entries.empty()) description_.apply(groups_of(header, trace), definition_);
}

void TraceReader::fill_samples(const Trace& trace) {
    const SampleFormat format = records().header().format();
    const int stored = samples_wanted_ ? std::min(trace.samples, line_samples_) : 0;
    samples_.set_descale(trace.set->descale);
    samples_.set_raw(trace.raw, stored, line_samples_, line_samples_, format);
    if (format != SampleFormat::kIeee || !samples_wanted_) return;
    const std::span<float> floats = samples_.floats(definition_);
    const std::int64_t bad = descale_ieee(floats, trace.set->descale);
    samples_.set_floats(floats);
    bad_samples_ += bad;
    if (bad > 0) ++bad_traces_;
}

std::vector<std::string> TraceReader::remarks() const {
    std::vector<std::string> remarks;
    const auto remark = [&remarks](std::int64_t traces, const std::string& words) {
        if (traces > 0) remarks.push_back(std::to_string(traces) + words);
    };
    char interval[40];
    std::snprintf(interval, sizeof interval, "%.3f", interval_.ms());
    remark(other_length_, " traces have another length than the line's " +
                              std::to_string(line_samples_) +
                              " samples: they were cut or filled up with zeros");
    remark(other_interval_, std::string(" traces have another sample interval than the line's ") +
                                interval + " ms: they were left out");
    remark(foreign_numbers_ + (records_reader_ ? records().foreign_file_numbers() : 0),
           " traces have another file number than their record, whose number is used");
    remark(bad_traces_, " traces hold " + std::to_string(bad_samples_) +
                            " samples that are no numbers or too large for one: they became 0");
    return remarks;
}

}  // namespace halvern::segd
