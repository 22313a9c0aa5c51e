#include "items/trace_spool.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "foundation/scratch.h"

namespace halvern {

namespace {

// A record: this, the header image, then the samples; filled up to a multiple of 8 bytes. Only this
// process reads it, so numbers are as they are in memory.
struct RecordHead {
    std::int32_t stored;   // samples that the trace had, of ...
    std::int32_t nominal;  // ... that it should have
    std::int32_t second_count;
    std::int32_t format;  // a SampleFormat
    std::int32_t is_raw;  // 1: `stored` samples as they were read, 0: `nominal` floats
    std::int32_t sample_bytes;
};
static_assert(sizeof(RecordHead) == 24);

constexpr std::size_t kSamplesAt = sizeof(RecordHead) + kTraceHeaderBytes;
constexpr std::size_t kStreamBytes = std::size_t{256} << 10;

// SEG-D codes need a multiplier that the record does not hold, so their samples are kept as floats.
bool keeps_record(const TraceSamples& samples) {
    const SampleFormat format = samples.format();
    return samples.raw_valid() && (format == SampleFormat::kIeee || format == SampleFormat::kIbm ||
                                   format == SampleFormat::kInt16);
}

}  // namespace

int TraceSpool::fail(const char* what) {
    const int number = errno;
    error_ = std::string(what) + " the buffer file '" + name_ + "'";
    if (number != 0) error_ += ": " + std::generic_category().message(number);
    return -1;
}

int TraceSpool::open(int traces_per_write) {
    close();
    traces_per_write_ = traces_per_write;
    written_ = 0;
    name_ = MakeScratchName();
    if (name_.empty()) {
        error_ = "Cannot create a buffer file";
        return -1;
    }
    named_ = true;
    errno = 0;
    // The file is there, empty, and is not truncated: a system that saw that might wait, when the
    // stream is closed, until all of it has a place on the disk.
    stream_buffer_.resize(kStreamBytes);
    out_.reset(std::fopen(name_.c_str(), "r+b"));
    if (Result<InputFile> opened = InputFile::open(name_)) in_ = std::move(*opened);
    if (!out_ || !in_) return fail("Cannot open");
    (void)std::setvbuf(out_.get(), stream_buffer_.data(), _IOFBF, stream_buffer_.size());
    std::error_code in_use;
    if (std::filesystem::remove(name_, in_use)) {
        RemoveScratchFile(name_);  // nothing left to remember
        named_ = false;
    }
    return 0;
}

void TraceSpool::make_room(std::size_t bytes) {
    if (bytes <= capacity_) return;
    capacity_ = std::max(bytes, kBlockBytes);
    auto larger = std::make_unique_for_overwrite<std::byte[]>(capacity_);
    if (used_ > 0) std::memcpy(larger.get(), block_.get(), used_);
    block_ = std::move(larger);
}

int TraceSpool::append(const TraceHeaderDefinition& header, TraceSamples& samples, Place& place) {
    const bool is_raw = keeps_record(samples);
    std::span<const std::byte> bytes;
    if (is_raw) {
        bytes = samples.raw().first(static_cast<std::size_t>(samples.stored_count()) *
                                    static_cast<std::size_t>(bytes_per_sample(samples.format())));
    } else {
        bytes = std::as_bytes(samples.floats(header));
    }
    const RecordHead head{.stored = samples.stored_count(),
                          .nominal = samples.nominal_count(),
                          .second_count = samples.second_count(),
                          .format = static_cast<std::int32_t>(samples.format()),
                          .is_raw = is_raw,
                          .sample_bytes = static_cast<std::int32_t>(bytes.size())};
    const std::size_t size = (kSamplesAt + bytes.size() + 7) / 8 * 8;
    if (used_ > 0 && used_ + size > kBlockBytes && write_block() != 0) return -1;
    make_room(used_ + size);

    std::byte* const record = block_.get() + used_;
    std::memcpy(record, &head, sizeof head);
    std::memcpy(record + sizeof head, header.image(), kTraceHeaderBytes);
    if (!bytes.empty()) std::memcpy(record + kSamplesAt, bytes.data(), bytes.size());
    std::memset(record + kSamplesAt + bytes.size(), 0, size - kSamplesAt - bytes.size());
    used_ += size;

    place = {.offset = written_, .bytes = static_cast<std::int64_t>(size)};
    written_ += place.bytes;
    return ++traces_in_block_ < traces_per_write_ ? 0 : write_block();
}

int TraceSpool::write_block() {
    errno = 0;
    if (std::fwrite(block_.get(), 1, used_, out_.get()) != used_) return fail("Cannot write");
    used_ = 0;
    traces_in_block_ = 0;
    return 0;
}

int TraceSpool::finish_writing() {
    if (used_ > 0 && write_block() != 0) return -1;
    errno = 0;
    if (std::fclose(out_.release()) != 0) return fail("Cannot write");
    return 0;
}

int TraceSpool::load(std::span<const Place> places, std::size_t& loaded) {
    const std::size_t most = std::min(places.size(), kBlockTraces);
    std::size_t bytes = 0;
    loaded = 0;
    for (; loaded < most; ++loaded) {
        const auto size = static_cast<std::size_t>(places[loaded].bytes);
        if (loaded > 0 && bytes + size > kBlockBytes) break;
        bytes += size;
    }
    used_ = 0;
    make_room(bytes);
    by_offset_.resize(loaded);
    in_block_.resize(loaded);
    for (std::size_t i = 0; i < loaded; ++i) by_offset_[i] = static_cast<std::uint32_t>(i);
    std::ranges::sort(by_offset_, {}, [&](std::uint32_t i) { return places[i].offset; });

    // Records that follow one another in the file do so in the block: one read brings them all.
    for (std::size_t i = 0; i < loaded;) {
        const std::int64_t begin = places[by_offset_[i]].offset;
        const std::size_t start = used_;
        std::int64_t end = begin;
        for (; i < loaded && places[by_offset_[i]].offset == end; ++i) {
            in_block_[by_offset_[i]] = used_;
            used_ += static_cast<std::size_t>(places[by_offset_[i]].bytes);
            end += places[by_offset_[i]].bytes;
        }
        errno = 0;
        const std::span<std::byte> run(block_.get() + start, used_ - start);
        Fault fault;
        if (in_->read_at(begin, run, fault) != run.size()) return fail("Cannot read back from");
    }
    return 0;
}

void TraceSpool::take_up(std::size_t i, TraceHeaderDefinition& header, TraceSamples& samples) {
    std::byte* const record = block_.get() + in_block_[i];
    RecordHead head;
    std::memcpy(&head, record, sizeof head);
    header.attach(record + sizeof head);
    const std::span<const std::byte> bytes(record + kSamplesAt,
                                           static_cast<std::size_t>(head.sample_bytes));
    // The floats of a worked trace are at least as many bytes as its record, so every count fits.
    samples.set_raw(bytes, head.stored, head.nominal, head.second_count,
                    static_cast<SampleFormat>(head.format));
    if (head.is_raw) return;
    worked_.resize(static_cast<std::size_t>(head.nominal));
    if (!bytes.empty()) std::memcpy(worked_.data(), bytes.data(), bytes.size());
    samples.set_floats(std::span(worked_));
}

void TraceSpool::close() {
    out_.reset();
    in_.reset();
    if (named_) RemoveScratchFile(name_);
    named_ = false;
    block_.reset();
    capacity_ = used_ = 0;
    traces_in_block_ = 0;
    stream_buffer_ = {};
    by_offset_ = {};
    in_block_ = {};
    worked_ = {};
}

}  // namespace halvern
