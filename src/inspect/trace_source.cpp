#include "inspect/trace_source.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "foundation/report.h"
#include "foundation/words.h"
#include "inspect/segd_trace_source.h"
#include "native/native_reader.h"
#include "segy/segy_reader.h"
#include "tape/segy_tape_source.h"
#include "tape/tape_drives.h"
#include "trace/file_kind.h"

namespace halvern {

namespace {

/// Whether a file that nothing speaks against has text or numbers where SEG-Y has them, or is too
/// short for either.
bool may_be_segy(BlockReader& file) {
    file.seek(0);
    LineHeader line;
    const std::span<const std::byte> bytes = file.next(kLineHeaderBytes);
    if (bytes.size() < kLineHeaderBytes || is_text(bytes.first(kTextHeaderBytes))) return true;
    std::ranges::copy(bytes, line.bytes().begin());
    return line.sample_interval() && line.samples() > 0 && line.format_code() >= 1 &&
           line.format_code() <= 16;
}

/// Why the traces of a tape end before its end; empty when they do not.
std::string ending_text(const SegyTapeEnding& ending) {
    using What = SegyTapeEnding::What;
    switch (ending.what) {
        case What::kReadError:
            return ending.why + "; nothing from there on is read";
        case What::kShortBlock:
            return "a block has " + in_words(ending.bytes) + " bytes where a trace takes " +
                   in_words(ending.expected) + "; nothing from there on is read";
        case What::kNoLineHeader:
            return "no binary header follows a further text header; nothing from there on is read";
        case What::kUnusableLine:
            return "a further line header " + ending.why + "; nothing from there on is read";
        case What::kOtherLine:
            return "a further line header does not fit the traces before it; nothing from there on "
                   "is read";
        case What::kNoTextHeaders:
            return "the extended text headers of a further line header are missing";
        case What::kNone:
        case What::kEndOfTape:
            break;
    }
    return {};
}

// What a file is whose reader does the reading.
template <class Reader>
class ReaderTraceSource : public TraceSource {
public:
    bool next() override { return reader_.read_next() == 1; }
    bool move_to(std::int64_t index) override { return reader_.move_to(index); }
    std::int64_t trace_count() const override { return reader_.trace_count(); }
    LineHeader& line() override { return reader_.line(); }
    TraceHeaderDefinition& definition() override { return reader_.definition(); }
    TraceSamples& samples() override { return reader_.samples(); }
    std::vector<std::string> oddities() const override { return reports_.of(Weight::kWarning); }
    std::string ended_early() const override { return reader_.fault().reason(); }

protected:
    bool lacks_weight() {
        return reader_.layout().format == SampleFormat::kInt16 &&
               reader_.definition().find("WEIGHT") < 0;
    }

    /// What the reader said last when it refused the file.
    std::string refusal(const std::string& path) const {
        const std::vector<std::string> errors = reports_.of(Weight::kError);
        return errors.empty() ? "'" + path + "' cannot be read" : errors.back();
    }

    CollectedReports reports_;
    Reader reader_;
};

class SegyTraceSource final : public ReaderTraceSource<SegyReader> {
public:
    /// Why it cannot be opened, or an empty text. `image`: the file is a tape image.
    std::string open(const std::string& path, const std::string& header_path, bool image) {
        const SegyReaderOptions options{.header_path = header_path, .report = &reports_};
        SegyOpening opening = SegyOpening::kNotValid;
        if (image) {
            device_ = make_image_device(path, TapeUse::kRead, quiet_);
            if (device_->open() != 0) return "'" + path + "' cannot be read";
            auto source = std::make_unique<SegyTapeSource>(*device_);
            image_ = source.get();
            opening = reader_.open(path, std::move(source), options);
        } else {
            opening = reader_.open(path, options);
        }
        if (opening == SegyOpening::kNoDefinition) {
            return "cannot read the header description '" + header_path + "'";
        }
        if (opening == SegyOpening::kNotValid) {
            const std::string why = image_ ? image_->ending().why : "";
            return why.empty() ? refusal(path) : "'" + path + "' cannot be read as SEG-Y: " + why;
        }
        if (lacks_weight()) {
            return "the header description '" + header_path +
                   "' has no word WEIGHT, which 16-bit samples need";
        }
        return {};
    }

    std::string kind() const override {
        return image_ ? "tape image that holds SEG-Y" : "SEG-Y file";
    }
    void set_samples_wanted(bool wanted) override { reader_.set_samples_wanted(wanted); }
    std::int64_t trace_count() const override {
        return reader_.file_size() < 0 ? -1 : reader_.trace_count();
    }
    bool has_text() const override { return true; }
    std::string sample_format() const override {
        const SegyLayout& layout = reader_.layout();
        return sample_format_text(layout.format) + " (format code " +
               std::to_string(layout.format_code) + ")";
    }
    std::vector<std::pair<std::string, std::string>> facts() const override {
        std::vector<std::pair<std::string, std::string>> facts;
        const SegyLayout& layout = reader_.layout();
        if (layout.field_samples != layout.samples && layout.field_samples != 0) {
            facts.emplace_back("samples in the field", std::to_string(layout.field_samples));
        }
        if (layout.text_headers > 0) {
            facts.emplace_back("extended text headers", std::to_string(layout.text_headers));
        }
        facts.emplace_back("trace record", in_words(layout.record_bytes()) + " bytes");
        if (reader_.file_size() >= 0) {
            facts.emplace_back("file size", in_words(reader_.file_size()) + " bytes");
        }
        return facts;
    }
    std::vector<std::string> oddities() const override {
        std::vector<std::string> all = ReaderTraceSource::oddities();
        std::ranges::copy(reader_.remarks(), std::back_inserter(all));
        if (image_ && image_->longer_blocks() > 0) {
            all.push_back(counted(image_->longer_blocks(), "block") +
                          " hold more than a trace, whose rest is not read");
        }
        return all;
    }
    std::string ended_early() const override {
        return image_ ? ending_text(image_->ending()) : ReaderTraceSource::ended_early();
    }

private:
    SilentReporter quiet_;                // what the device would say, ending_text says
    std::unique_ptr<TapeDevice> device_;  // of an image
    SegyTapeSource* image_ = nullptr;     // the reader's source; null: a disk file
};

class NativeTraceSource final : public ReaderTraceSource<NativeReader> {
public:
    std::string open(const std::string& path) {
        switch (reader_.open(path, 0, reports_)) {
            case NativeOpening::kNoDefinition:
                return "cannot read the dataset's header description '" +
                       reader_.parts().desc_path + "'";
            case NativeOpening::kNotValid:
                return refusal(path);
            default:
                break;
        }
        if (lacks_weight()) {
            return "the dataset's header description has no word WEIGHT, which 16-bit samples need";
        }
        return {};
    }

    std::string kind() const override { return "native dataset"; }
    void set_samples_wanted(bool) override {}
    std::string sample_format() const override {
        return sample_format_text(reader_.layout().format);
    }
    std::vector<std::pair<std::string, std::string>> facts() const override {
        std::vector<std::pair<std::string, std::string>> facts{
            {"header description", reader_.parts().desc_path},
            {"line header", reader_.parts().line_path}};
        for (const NativeSegment& segment : reader_.parts().segments) {
            facts.emplace_back("headers", segment.head_path);
            facts.emplace_back("samples", segment.data_path);
        }
        return facts;
    }
};

template <class Source, class... Arguments>
TraceOpening opened(const Arguments&... arguments) {
    auto source = std::make_unique<Source>();
    const std::string failure = source->open(arguments...);
    if (!failure.empty()) return {nullptr, failure};
    return {std::move(source), {}};
}

TraceOpening open_image(const std::string& path, const std::string& header_path) {
    std::optional<TapeImageReader> image = TapeImageReader::open(path);
    if (!image) return {nullptr, "'" + path + "' cannot be read"};
    const TapeImageRecord first = image->next();
    if (first.data.size() == kTextHeaderBytes || first.data.size() == kLineHeaderBytes) {
        return opened<SegyTraceSource>(path, header_path, true);
    }
    if (begins_segd(first.data)) return open_segd_source(path, header_path, true);
    return {nullptr, "the tape image '" + path +
                         "' holds neither SEG-Y nor SEG-D: its first block has " +
                         in_words(static_cast<std::int64_t>(first.data.size())) + " bytes"};
}

}  // namespace

std::vector<std::string> TraceSource::notes() const {
    std::vector<std::string> all = oddities();
    if (std::string ending = ended_early(); !ending.empty()) all.push_back(std::move(ending));
    return all;
}

std::string sample_format_text(SampleFormat format) {
    switch (format) {
        case SampleFormat::kIbm:
            return "IBM float, 32 bit";
        case SampleFormat::kInt16:
            return "integer, 16 bit";
        case SampleFormat::kIeee:
            return "IEEE float, 32 bit";
        default:
            return "SEG-D";
    }
}

TraceOpening open_trace_source(const std::string& path, const std::string& header_path) {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) return {nullptr, "there is no file '" + path + "'"};
    if (fs::is_directory(status)) return {nullptr, "'" + path + "' is a directory"};
    if (!fs::is_regular_file(status)) {
        return {nullptr, "'" + path + "' is a pipe or a device; put its data into a file"};
    }
    Result<BlockReader> reader = BlockReader::open(path);
    if (!reader) return {nullptr, "'" + path + "' cannot be read"};
    if (reader->size() == 0) return {nullptr, "'" + path + "' is empty"};
    switch (file_kind(*reader)) {
        case FileKind::kDataset:
            return opened<NativeTraceSource>(path);
        case FileKind::kTapeImage:
            return open_image(path, header_path);
        case FileKind::kSegd:
            return open_segd_source(path, header_path, false);
        default:
            break;
    }
    if (!refuse_segy(*reader) && !may_be_segy(*reader)) {
        return {nullptr,
                "'" + path + "' is of no kind that is known: SEG-Y, dataset, SEG-D or tape image"};
    }
    return opened<SegyTraceSource>(path, header_path, false);
}

}  // namespace halvern
