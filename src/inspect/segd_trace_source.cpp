#include "inspect/segd_trace_source.h"

#include <algorithm>
#include <array>
#include <optional>

#include "foundation/words.h"
#include "inspect/captured_log.h"
#include "segd/record_reader.h"
#include "segd/samples.h"
#include "tape/tape_image.h"

namespace halvern {

namespace {

using segd::BlockSource;
using segd::ChannelSet;
using segd::HeaderFault;
using segd::RecordReader;

/// The blocks of a tape image.
class ImageBlockSource final : public BlockSource {
public:
    explicit ImageBlockSource(TapeImageReader image) : image_(std::move(image)) {}

    Status next(std::span<const std::byte>& block) override {
        const TapeImageRecord record = image_.next();
        if (record.item == TapeImageItem::kFault) fault_ = image_.fault();
        block = record.item == TapeImageItem::kBlock ? record.data : std::span<const std::byte>{};
        if (record.item == TapeImageItem::kBlock) return Status::kBlock;
        return record.item == TapeImageItem::kBadBlock ? Status::kReadError : Status::kNoData;
    }
    int skip_file() override {
        for (;;) {
            switch (image_.next().item) {
                case TapeImageItem::kFilemark:
                    return 0;
                case TapeImageItem::kFault:
                    fault_ = image_.fault();
                    return -1;
                case TapeImageItem::kEndOfData:
                    return -1;
                default:
                    break;
            }
        }
    }

    /// Why nothing can be read from where the image stands, which is not its end; else empty.
    const std::string& fault() const { return fault_; }

private:
    TapeImageReader image_;
    std::string fault_;
};

std::string fault_text(const RecordReader& reader) {
    switch (reader.fault()) {
        case HeaderFault::kRevision3:
            return "is SEG-D of revision 3, which is not read";
        case HeaderFault::kFormat:
            return "holds SEG-D samples of format " +
                   std::to_string(reader.layout().general.format) +
                   "; 8015, 8036, 8048 and 8058 are read";
        case HeaderFault::kChannelSet:
            return "has SEG-D channel sets that make no sense";
        default:
            return "has a SEG-D general header that makes no sense";
    }
}

class SegdTraceSource final : public TraceSource {
public:
    std::string open(const std::string& path, const std::string& header_path, bool image) {
        const CapturedLog log;
        definition_.attach(header_.data());
        if (definition_.load(header_path) != 0) {
            return "cannot read the header description '" + header_path + "'";
        }
        if (image) {
            std::optional<TapeImageReader> tape = TapeImageReader::open(path);
            if (tape) {
                auto source = std::make_unique<ImageBlockSource>(std::move(*tape));
                image_ = source.get();
                source_ = std::move(source);
            }
        } else {
            auto file = segd::FileBlockSource::open(path);
            if (file) source_ = std::make_unique<segd::FileBlockSource>(std::move(*file));
        }
        if (!source_) return "'" + path + "' cannot be read";
        // A disk file has no blocks to begin traces with.
        reader_.emplace(*source_, segd::Dialect::kOther, !image);
        switch (reader_->next_record()) {
            case RecordReader::Record::kRecord:
                break;
            case RecordReader::Record::kFault:
                return "'" + path + "' " + fault_text(*reader_);
            default: {
                const std::string reason = image_ ? image_->fault() : "";
                return "'" + path + "' begins with no whole SEG-D record header" +
                       (reason.empty() ? "" : ": ") + reason;
            }
        }
        return start(header_path);
    }

    std::string kind() const override {
        return image_ ? "tape image that holds SEG-D" : "SEG-D file";
    }

    bool next() override {
        while (true) {
            const RecordReader::Next found = ahead_ ? *ahead_ : reader_->next_trace();
            ahead_.reset();
            switch (found) {
                case RecordReader::Next::kTrace:
                    take();
                    return true;
                case RecordReader::Next::kEndOfRecord:
                    if (!next_record()) return false;
                    break;
                default:
                    ++lost_;
            }
        }
    }
    void set_samples_wanted(bool wanted) override { samples_wanted_ = wanted; }
    std::int64_t trace_count() const override { return -1; }
    LineHeader& line() override { return line_; }
    TraceHeaderDefinition& definition() override { return definition_; }
    TraceSamples& samples() override { return samples_; }
    std::string sample_format() const override {
        return "SEG-D format " + std::to_string(reader_->header().general().format);
    }
    std::vector<std::pair<std::string, std::string>> facts() const override { return facts_; }
    std::vector<std::string> oddities() const override {
        if (lost_ == 0) return {};
        return {counted(lost_, "trace") + " could not be read"};
    }
    std::string ended_early() const override {
        if (faults_ <= kMostFaultsTold) return ended_;
        return ended_ + "; and " + in_words(faults_ - kMostFaultsTold) + " more like these";
    }

private:
    // Reads one trace ahead: how many samples it has is what the line says.
    std::string start(const std::string& header_path) {
        for (const char* name : kWords) words_.push_back(definition_.find(name));
        describe();
        ahead_ = reader_->next_trace();
        const segd::RecordHeader& record = reader_->header();
        const ChannelSet* set = nullptr;
        int samples = 0;
        if (*ahead_ == RecordReader::Next::kTrace) {
            set = reader_->trace().set;
            samples = reader_->trace().samples;
        } else {
            set = &*std::ranges::find_if(record.sets(),
                                         [](const ChannelSet& each) { return each.channels > 0; });
            samples = static_cast<int>(reader_->expected_samples(*set));
        }
        line_.build_from_definition(header_path, record.sample_interval(*set),
                                    std::min(samples, 32767), SampleFormat::kIeee);
        return {};
    }

    void describe() {
        const segd::RecordHeader& record = reader_->header();
        const segd::GeneralHeader1& general = record.general();
        char text[120];
        facts_.emplace_back("SEG-D revision", in_words(record.revision()));
        facts_.emplace_back("first record", std::to_string(record.file_number()));
        std::snprintf(text, sizeof text, "day %d of year %02d, %02d:%02d:%02d", general.day,
                      general.year, general.hour, general.minute, general.second);
        facts_.emplace_back("recorded", text);
        facts_.emplace_back("manufacturer", std::to_string(general.manufacturer));
        for (const ChannelSet& set : record.sets()) {
            if (set.channels == 0) continue;
            std::snprintf(text, sizeof text,
                          "type %d, %d channels, %d to %d ms, low cut %d Hz, high cut %d Hz",
                          set.type, set.channels, set.start_ms, set.end_ms, set.low_cut_hz,
                          set.alias_hz);
            facts_.emplace_back("channel set " + std::to_string(set.number), text);
        }
    }

    bool next_record() {
        const segd::RecordHeader& done = reader_->header();
        if (reader_->sequence() < done.traces()) {
            tell("record " + std::to_string(done.file_number()) + " has " +
                 std::to_string(reader_->sequence()) + " of the " + in_words(done.traces()) +
                 " traces that its header announces");
        }
        while (true) {
            switch (reader_->next_record()) {
                case RecordReader::Record::kRecord:
                    ++records_;
                    return true;
                case RecordReader::Record::kEnd:
                    return end();
                case RecordReader::Record::kFault:
                    tell("a record behind " + counted(records_, "record") + ' ' +
                         fault_text(*reader_));
                    break;
                default:
                    tell("a record header behind " + counted(records_, "record") +
                         " cannot be read");
                    break;
            }
            if (reader_->skip_file() != 0) return end();
        }
    }
    // A source that is stuck looks to the reader as if the data ended there.
    bool end() {
        if (image_ && !image_->fault().empty()) {
            tell(image_->fault() + "; nothing from there on is read");
        }
        return false;
    }
    void tell(const std::string& fault) {
        if (++faults_ <= kMostFaultsTold) ended_.append(ended_.empty() ? "" : "; ").append(fault);
    }

    // Header words and samples of the trace that the reader stands on.
    void take() {
        const segd::Trace& trace = reader_->trace();
        const segd::RecordHeader& record = reader_->header();
        const segd::GeneralHeader1& general = record.general();
        header_.fill(std::byte{});
        const int interval_us = record.sample_interval(*trace.set).us();
        const bool positioned = !record.sources().empty();
        const segd::GeneralHeaderN source =
            positioned ? record.sources().front() : segd::GeneralHeaderN{};
        const segd::TraceHeaderExtension1 receiver =
            trace.receiver.value_or(segd::TraceHeaderExtension1{});
        const double values[] = {static_cast<double>(record.file_number()),
                                 static_cast<double>(trace.header.trace_number),
                                 static_cast<double>(trace.set->number),
                                 static_cast<double>(segd::trace_id_of(trace.set->type)),
                                 static_cast<double>(general.day),
                                 static_cast<double>(general.hour),
                                 static_cast<double>(general.minute),
                                 static_cast<double>(general.second),
                                 static_cast<double>(trace.sequence),
                                 static_cast<double>(records_),
                                 source.source_line,
                                 source.source_point,
                                 static_cast<double>(source.source_index),
                                 receiver.receiver_line,
                                 receiver.receiver_point,
                                 static_cast<double>(receiver.receiver_index),
                                 static_cast<double>(trace.samples),
                                 static_cast<double>(interval_us)};
        static_assert(std::size(values) == std::size(kWords));
        for (std::size_t i = 0; i < std::size(kWords); ++i) {
            definition_.set_double(words_[i], values[i]);
        }
        if (!samples_wanted_) {
            samples_.set_raw({}, 0, trace.samples, trace.samples, SampleFormat::kIeee);
            return;
        }
        decoded_.resize(static_cast<std::size_t>(std::clamp(trace.samples, 0, 1'000'000)));
        segd::decode(general.format, trace.raw, trace.set->descale, decoded_);
        samples_.set_floats(std::span(decoded_));
    }

    static constexpr const char* kWords[] = {
        "FFID",     "CHAN",    "CHANSET",  "TRACEID",  "DTIME",    "HTIME",
        "MTIME",    "STIME",   "SEQCHAN",  "SEQFFID",  "SOULINE",  "SOUPOINT",
        "SOUINDEX", "RECLINE", "RECPOINT", "RECINDEX", "NUMSAMPS", "SAMPRATE"};

    static constexpr std::int64_t kMostFaultsTold = 3;

    std::unique_ptr<BlockSource> source_;
    const ImageBlockSource* image_ = nullptr;  // the same; null: a disk file
    std::optional<RecordReader> reader_;
    std::optional<RecordReader::Next> ahead_;
    LineHeader line_;
    TraceHeaderDefinition definition_;
    TraceSamples samples_;
    std::array<std::byte, kTraceHeaderBytes> header_{};
    std::vector<int> words_;  // indexes of kWords in the definition
    std::vector<float> decoded_;
    std::vector<std::pair<std::string, std::string>> facts_;
    std::string ended_;
    std::int64_t records_ = 1;
    std::int64_t lost_ = 0;
    std::int64_t faults_ = 0;
    bool samples_wanted_ = true;
};

}  // namespace

TraceOpening open_segd_source(const std::string& path, const std::string& header_path, bool image) {
    auto source = std::make_unique<SegdTraceSource>();
    const std::string failure = source->open(path, header_path, image);
    if (!failure.empty()) return {nullptr, failure};
    return {std::move(source), {}};
}

}  // namespace halvern
