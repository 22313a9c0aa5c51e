#include "inspect/trace_source.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>

#include "foundation/report.h"
#include "foundation/words.h"
#include "inspect/captured_log.h"
#include "inspect/segd_trace_source.h"
#include "native/native_reader.h"
#include "segd/record_header.h"
#include "segy/segy_reader.h"
#include "tape/segy_tape_source.h"
#include "tape/tape_drives.h"
#include "trace/big_endian.h"
#include "trace/ebcdic.h"

namespace halvern {

namespace {

enum class FileKind { kSegy, kNative, kTapeImage, kSegd, kUnknown };

/// The first bytes of a file, and its size.
struct Beginning {
    std::vector<std::byte> bytes;
    std::int64_t size = 0;
};

std::uint32_t little_endian(std::span<const std::byte> bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) value = value << 8 | std::to_integer<std::uint32_t>(bytes[i]);
    return value;
}

/// Whether an image in the layout of tape blocks begins here: the first block's length is
/// before and after it.
bool begins_tape_image(const std::string& path, const Beginning& file) {
    if (file.bytes.size() < 8) return false;
    const std::uint32_t length = little_endian(file.bytes) & 0x7FFFFFFF;
    if (length == 0 || length > TapeImageReader::kLongestBlock || length + 8 > file.size) {
        return false;
    }
    std::optional<TapeImageReader> reader = TapeImageReader::open(path);
    if (!reader) return false;
    const TapeImageItem item = reader->next().item;
    return item == TapeImageItem::kBlock || item == TapeImageItem::kBadBlock;
}

bool begins_segd(std::span<const std::byte> bytes) {
    if (segd::StorageUnitLabel::is_one(bytes)) return true;
    segd::HeaderLayout layout{};
    const std::span<const std::byte> header =
        bytes.first(std::min(bytes.size(), segd::HeaderLayout::kMostGeneralBytes));
    switch (segd::HeaderLayout::parse(header, segd::Dialect::kOther, layout)) {
        case segd::HeaderFault::kNone:
        case segd::HeaderFault::kChannelSet:
            return segd::sample_format_of(layout.general.format).has_value();
        case segd::HeaderFault::kFormat:  // one of the standard's that is not read
            return layout.general.format / 100 == 80;
        case segd::HeaderFault::kRevision3:
            return true;
        default:
            return false;
    }
}

/// Whether most of the text header is letters, digits and blanks.
bool is_text(std::span<const std::byte> bytes) {
    const auto share = [&](auto&& character_of) {
        return std::ranges::count_if(bytes, [&](std::byte byte) {
            const int c = std::to_integer<int>(character_of(byte));
            return c >= ' ' && c <= '~';
        });
    };
    const auto ebcdic = share([](std::byte byte) { return ebcdic_to_ascii(byte); });
    const auto ascii = share([](std::byte byte) { return byte; });
    return std::max(ebcdic, ascii) * 10 >= static_cast<std::ptrdiff_t>(bytes.size()) * 9;
}

/// What the 400 bytes of a binary header say, read in either byte order.
bool makes_sense(std::span<const std::byte> binary, bool swapped) {
    const auto field = [&](std::size_t at) {
        const int high = std::to_integer<int>(binary[at + (swapped ? 1 : 0)]);
        return high << 8 | std::to_integer<int>(binary[at + (swapped ? 0 : 1)]);
    };
    const int interval = field(16), samples = field(20), format = field(24);
    return interval > 0 && samples > 0 && samples < 32768 && format >= 1 && format <= 16;
}

struct Recognised {
    FileKind kind;
    std::string failure = {};
};

Recognised recognise(const std::string& path, const Beginning& file) {
    const std::span<const std::byte> bytes = file.bytes;
    const std::string_view magic = NativeMain::kMagic;
    if (bytes.size() >= magic.size() &&
        std::ranges::equal(bytes.first(magic.size()), std::as_bytes(std::span(magic)))) {
        return {FileKind::kNative};
    }
    if (begins_tape_image(path, file)) return {FileKind::kTapeImage};
    if (begins_segd(bytes)) return {FileKind::kSegd};
    if (bytes.size() < kLineHeaderBytes) {
        return {FileKind::kUnknown, "'" + path + "' holds " + in_words(file.size) +
                                        " bytes and is neither a dataset nor SEG-D nor a tape "
                                        "image; the headers of a SEG-Y file alone take 3,600"};
    }
    const std::span<const std::byte> binary = bytes.subspan(kTextHeaderBytes, kBinaryHeaderBytes);
    if (makes_sense(binary, false)) return {FileKind::kSegy};
    if (makes_sense(binary, true)) {
        return {
            FileKind::kUnknown,
            "'" + path + "' looks like SEG-Y with its bytes the wrong way round (little-endian)"};
    }
    if (is_text(bytes.first(kTextHeaderBytes))) return {FileKind::kSegy};
    return {FileKind::kUnknown,
            "'" + path + "' is of no kind that is known: SEG-Y, dataset, SEG-D or tape image"};
}

/// Why trace `index` of `count`, from 0, is not there although the file had it when it was opened.
std::string lost_text(std::int64_t index, std::int64_t count) {
    return "trace " + in_words(index + 1) + " of " + in_words(count) +
           " cannot be read: the file has become shorter, or its disk fails";
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
    bool next() override {
        if (reader_.read_next() == 1) {
            ++next_;
            return true;
        }
        if (next_ < trace_count()) ended_ = lost_text(next_, trace_count());
        return false;
    }
    bool move_to(std::int64_t index) override {
        if (!reader_.move_to(index)) return false;
        next_ = index;
        return true;
    }
    std::int64_t trace_count() const override { return reader_.trace_count(); }
    LineHeader& line() override { return reader_.line(); }
    TraceHeaderDefinition& definition() override { return reader_.definition(); }
    TraceSamples& samples() override { return reader_.samples(); }
    std::string ended_early() const override { return ended_; }

protected:
    bool lacks_weight() {
        return reader_.layout().format == SampleFormat::kInt16 &&
               reader_.definition().find("WEIGHT") < 0;
    }

    LogReporter report_{"reader"};
    Reader reader_;

private:
    std::int64_t next_ = 0;  // index of the trace to read next
    std::string ended_;
};

class SegyTraceSource final : public ReaderTraceSource<SegyReader> {
public:
    /// Why it cannot be opened, or an empty text. `image`: the file is a tape image.
    std::string open(const std::string& path, const std::string& header_path, bool image) {
        const SegyReaderOptions options{.header_path = header_path, .report = &report_};
        const CapturedLog log;
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
            const std::vector<std::string> errors = log.errors();
            if (!errors.empty()) return errors.front();
            const std::string reason = image_ ? ": " + image_->ending().why : "";
            return "'" + path + "' cannot be read as SEG-Y" + reason;
        }
        oddities_ = log.warnings();
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
        std::vector<std::string> all = oddities_;
        if (const std::int64_t traces = reader_.contradictions(); traces > 0) {
            all.push_back(in_words(traces) +
                          " of the traces read give a number of samples or an interval that the "
                          "binary header does not; the binary header counts");
        }
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
    std::vector<std::string> oddities_;
};

class NativeTraceSource final : public ReaderTraceSource<NativeReader> {
public:
    std::string open(const std::string& path) {
        const CapturedLog log;
        switch (reader_.open(path, 0, report_)) {
            case NativeOpening::kNoDefinition:
                return "cannot read the dataset's header description '" +
                       reader_.parts().desc_path + "'";
            case NativeOpening::kNotValid: {
                const std::vector<std::string> errors = log.errors();
                return errors.empty() ? "'" + path + "' cannot be read" : errors.front();
            }
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
    Beginning file{.size = reader->size()};
    if (file.size == 0) return {nullptr, "'" + path + "' is empty"};
    const std::span<const std::byte> bytes =
        reader->next(static_cast<std::size_t>(std::min<std::int64_t>(file.size, kLineHeaderBytes)));
    file.bytes.assign(bytes.begin(), bytes.end());

    const Recognised recognised = recognise(path, file);
    switch (recognised.kind) {
        case FileKind::kNative:
            return opened<NativeTraceSource>(path);
        case FileKind::kTapeImage:
            return open_image(path, header_path);
        case FileKind::kSegd:
            return open_segd_source(path, header_path, false);
        case FileKind::kSegy:
            return opened<SegyTraceSource>(path, header_path, false);
        default:
            return {nullptr, recognised.failure};
    }
}

}  // namespace halvern
