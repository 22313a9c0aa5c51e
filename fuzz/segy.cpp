// SEG-Y files: any bytes are a file, or any bytes are the fields and records behind a whole header.
// What opens is read forwards and at random, decoded, and encoded again in the three formats.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <vector>

#include "flow/record_encoder.h"
#include "foundation/messages.h"
#include "foundation/report.h"
#include "segy/segy_reader.h"

void halvern::TerminateJob(int) { __builtin_trap(); }  // the description has all that is needed

namespace {

namespace fs = std::filesystem;
using namespace halvern;

/// A file in memory.
class MemorySource final : public SegySource {
public:
    explicit MemorySource(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {}
    bool read_line_header(std::span<std::byte, kLineHeaderBytes> header) override {
        if (bytes_.size() < header.size()) return false;
        std::copy_n(bytes_.begin(), header.size(), header.begin());
        next_ = kLineHeaderBytes;
        return true;
    }
    bool skip_text_headers(int count) override {
        if (count < 0) __builtin_trap();
        return seek(next_ + SegyLayout::kTextHeaderBlock * count);
    }
    std::span<const std::byte> next_record(std::int64_t record_bytes,
                                           std::int64_t wanted) override {
        if (wanted > record_bytes || wanted < kTraceHeaderBytes) __builtin_trap();
        const std::int64_t left = std::max<std::int64_t>(size() - next_, 0);
        lent_.assign(bytes_.end() - left, bytes_.end() - left + std::min(left, wanted));
        next_ += record_bytes;
        return lent_;
    }
    std::int64_t size() const override { return static_cast<std::int64_t>(bytes_.size()); }
    bool seek(std::int64_t offset) override {
        next_ = offset;
        return offset <= size();
    }

private:
    std::vector<std::byte> bytes_;
    std::vector<std::byte> lent_;  // its own block, so that reading past a record is seen
    std::int64_t next_ = 0;
};

const std::string& description() {
    static const struct Description {
        Description() {
            std::ofstream file(path);
            const std::pair<const char*, const char*> words[] = {
                {"TRNUML", "0 1"},   {"TRNUMR", "4 1"},     {"FFID", "8 1"},
                {"TRACEID", "28 0"}, {"NUMSAMPS", "114 0"}, {"SAMPRATE", "116 0"},
                {"WEIGHT", "168 0"}, {"TOTSAMP", "200 1"},  {"STSAMP", "204 1"}};
            for (const auto& [name, rest] : words) {
                std::string line(51, ' ');
                line += name;
                line.resize(60, ' ');
                file << line << rest << '\n';
            }
        }
        ~Description() {
            std::error_code ignored;
            fs::remove(path, ignored);
        }
        std::string path =
            (fs::temp_directory_path() / ("halvern-fuzz-" + std::to_string(std::random_device{}())))
                .string();
    } file;
    return file.path;
}

// A header with the six fields that count from the first bytes, and the rest as it comes behind it.
std::vector<std::byte> composed(std::span<const std::byte> data) {
    std::vector<std::byte> file(kLineHeaderBytes);
    for (const std::size_t field : {3216, 3220, 3222, 3224, 3500, 3504}) {
        const std::size_t bytes = std::min<std::size_t>(data.size(), 2);
        std::copy_n(data.begin(), bytes, file.begin() + static_cast<std::ptrdiff_t>(field));
        data = data.subspan(bytes);
    }
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::span<const std::byte> bytes = std::as_bytes(std::span(data + 1, size - 1));
    SegyReader reader;
    const auto open = [&](std::vector<std::byte> file) {
        return reader.open("fuzz", std::make_unique<MemorySource>(std::move(file)),
                           {.header_path = description(), .progress_interval = 2});
    };
    const bool whole = data[0] & 1;
    if (open(whole ? std::vector(bytes.begin(), bytes.end()) : composed(bytes)) !=
        SegyOpening::kOpened) {
        return 0;
    }
    const SilentReporter silent;
    constexpr SampleFormat kFormats[] = {SampleFormat::kIeee, SampleFormat::kIbm,
                                         SampleFormat::kInt16};
    std::int64_t read = 0;
    while (read < 64 && reader.read_next() == 1) {
        ++read;
        const int count = reader.samples().nominal_count();
        if (reader.samples().stored_count() > count || count != reader.layout().samples) {
            __builtin_trap();
        }
        for (const SampleFormat format : kFormats) {
            RecordEncoder encoder(silent, reader.definition(), format,
                                  data[0] & 2 ? count : count / 2, reader.layout().interval,
                                  data[0]);
            (void)segy_output_line(reader.line(), format, encoder.samples(), encoder.interval());
            (void)encoder.encode(reader.definition(), reader.samples());
        }
        if (reader.samples().floats(reader.definition()).size() !=
            static_cast<std::size_t>(count)) {
            __builtin_trap();
        }
    }
    if (read < 64 && read != reader.trace_count()) __builtin_trap();
    reader.set_samples_wanted(data[0] & 4);
    const std::int64_t index = data[0] >> 3;
    if ((reader.read_trace(index) == 1) != (index < reader.trace_count())) __builtin_trap();
    return 0;
}
