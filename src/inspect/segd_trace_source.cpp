#include "inspect/segd_trace_source.h"

#include <optional>

#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "segd/trace_reader.h"
#include "tape/tape_drives.h"

namespace halvern {

namespace {

using segd::ChannelSet;
using segd::HeaderFault;
using Met = segd::TraceReader::Met;
using Record = segd::RecordReader::Record;

std::string fault_text(const segd::RecordReader& records) {
    switch (records.fault()) {
        case HeaderFault::kRevision3:
            return "is SEG-D of revision 3, which is not read";
        case HeaderFault::kFormat:
            return "holds SEG-D samples of format " +
                   std::to_string(records.layout().general.format) +
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
        if (image) {
            device_ = make_image_device(path, TapeUse::kRead, quiet_);
            if (device_->open() == 0) source_ = std::make_unique<segd::TapeBlockSource>(*device_);
        } else if (auto file = segd::FileBlockSource::open(path)) {
            source_ = std::make_unique<segd::FileBlockSource>(std::move(*file));
        }
        if (!source_) return "'" + path + "' cannot be read";
        // A disk file has no blocks to begin traces with.
        if (!reader_.load({.header_path = header_path,
                           .description_path = TreePath(SystemDirectory(), "Halvern.segd"),
                           .blocked = !image})) {
            return "cannot read the header description '" + header_path + "'";
        }
        switch (reader_.open(*source_)) {
            case Record::kRecord:
                describe();
                return {};
            case Record::kFault:
                return "'" + path + "' " + fault_text(reader_.records());
            default:
                const std::string trouble = reader_.trouble();
                return "'" + path + "' begins with no whole SEG-D record header" +
                       (trouble.empty() ? "" : ": ") + trouble;
        }
    }

    std::string kind() const override {
        return device_ ? "tape image that holds SEG-D" : "SEG-D file";
    }

    bool next() override {
        while (!ended_) {
            switch (reader_.next()) {
                case Met::kTrace:
                    return true;
                case Met::kOtherInterval:
                case Met::kRecord:
                    break;
                case Met::kEndOfRecord:
                    end_record();
                    break;
                case Met::kLostBlock:
                case Met::kBadTraceHeader:
                case Met::kBadTrace:
                    ++lost_;
                    break;
                case Met::kLostHeader:
                    tell("a record header after " + counted(reader_.record_count(), "record") +
                         " cannot be read");
                    break;
                case Met::kBadHeader:
                    tell("a record after " + counted(reader_.record_count(), "record") + ' ' +
                         fault_text(reader_.records()));
                    break;
                case Met::kNoWayOn:
                    tell(reader_.trouble() + "; nothing from there on is read");
                    ended_ = true;
                    break;
                case Met::kEnd:
                    ended_ = true;
                    break;
            }
        }
        return false;
    }
    void set_samples_wanted(bool wanted) override { reader_.set_samples_wanted(wanted); }
    std::int64_t trace_count() const override { return -1; }
    LineHeader& line() override { return reader_.line(); }
    TraceHeaderDefinition& definition() override { return reader_.definition(); }
    TraceSamples& samples() override { return reader_.samples(); }
    std::string sample_format() const override {
        return "SEG-D format " + std::to_string(reader_.records().header().general().format);
    }
    std::vector<std::pair<std::string, std::string>> facts() const override { return facts_; }
    std::vector<std::string> oddities() const override {
        std::vector<std::string> oddities = reader_.remarks();
        if (reader_.trace_samples() > reader_.line_samples()) {
            oddities.push_back("traces of " + in_words(reader_.trace_samples()) +
                               " samples are longer than a line can be");
        }
        if (lost_ > 0) oddities.push_back(counted(lost_, "trace") + " could not be read");
        return oddities;
    }
    std::string ended_early() const override {
        if (faults_ <= kMostFaultsTold) return told_;
        return told_ + "; and " + in_words(faults_ - kMostFaultsTold) + " more like these";
    }

private:
    void describe() {
        const segd::RecordHeader& record = reader_.records().header();
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

    void end_record() {
        const segd::RecordReader& records = reader_.records();
        const std::string record = "record " + std::to_string(records.header().file_number());
        if (records.sequence() < records.header().traces()) {
            tell(record + " has " + std::to_string(records.sequence()) + " of the " +
                 in_words(records.header().traces()) + " traces that its header announces");
        }
        if (records.left_over() > 0) {
            tell(record + " has " + in_words(records.left_over()) + " bytes that are no trace");
        }
    }
    void tell(const std::string& fault) {
        if (++faults_ <= kMostFaultsTold) told_.append(told_.empty() ? "" : "; ").append(fault);
    }

    static constexpr std::int64_t kMostFaultsTold = 3;

    SilentReporter quiet_;                // what the device would say, the reader's values tell
    std::unique_ptr<TapeDevice> device_;  // of an image; null: a disk file
    std::unique_ptr<segd::BlockSource> source_;
    segd::TraceReader reader_;
    std::vector<std::pair<std::string, std::string>> facts_;
    std::string told_;
    std::int64_t lost_ = 0;
    std::int64_t faults_ = 0;
    bool ended_ = false;
};

}  // namespace

TraceOpening open_segd_source(const std::string& path, const std::string& header_path, bool image) {
    auto source = std::make_unique<SegdTraceSource>();
    const std::string failure = source->open(path, header_path, image);
    if (!failure.empty()) return {nullptr, failure};
    return {std::move(source), {}};
}

}  // namespace halvern
