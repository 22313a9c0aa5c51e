#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <span>

#include "foundation/messages.h"
#include "scratch_folder.h"
#include "segd/trace_reader.h"

void halvern::TerminateJob(int) {}

namespace {

using namespace halvern;

// Blocks cut from the input: a length in two bytes (0 a filemark, FFFF a lost block), then bytes.
class CutSource final : public segd::BlockSource {
public:
    CutSource(std::span<const std::byte> bytes, bool marks) : bytes_(bytes), marks_(marks) {}
    Status next(std::span<const std::byte>& block) override {
        if (bytes_.size() < 2) return Status::kNoData;
        const std::size_t length = get_u16(bytes_.first<2>());
        bytes_ = bytes_.subspan(2);
        if (length == 0) return Status::kNoData;
        if (length == 0xFFFF) return Status::kReadError;
        block = bytes_.first(std::min(length, bytes_.size()));
        bytes_ = bytes_.subspan(block.size());
        return block.empty() ? Status::kNoData : Status::kBlock;
    }
    int skip_file() override {
        std::span<const std::byte> block;
        while (bytes_.size() >= 2) {
            if (next(block) == Status::kNoData) return 0;
        }
        return -1;
    }
    bool marks_blocks() const override { return marks_; }

private:
    std::span<const std::byte> bytes_;
    const bool marks_;
};

}  // namespace

// Records of any bytes, in every dialect, from single blocks, blocked tapes and disk files.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const unsigned mode = data[0];
    static const ScratchFolder folder;
    static const bool written = [] {
        std::ofstream(folder.file("header")) << "Field file identifier   FFID 8 1\n";
        std::ofstream(folder.file("copied")) << "FFID CS 31 BCD4\nFFID XTN 1 U4\nFFID TE7 1 R4\n";
        return true;
    }();
    segd::TraceReader reader;
    if (!reader.load({.header_path = folder.file("header"),
                      .description_path = folder.file("copied"),
                      .dialect = static_cast<segd::Dialect>(mode >> 2 & 3),
                      .blocked = (mode & 1) != 0,
                      .trace_length_ms = static_cast<int>(mode >> 4)}) ||
        !written) {
        __builtin_trap();
    }
    CutSource source(std::as_bytes(std::span(data + 1, size - 1)), (mode & 2) == 0);
    (void)segd::Transcription::parse({reinterpret_cast<const char*>(data), size});
    if (reader.open(source) != segd::RecordReader::Record::kRecord) return 0;
    using Met = segd::TraceReader::Met;
    std::size_t traces = 0;
    for (Met met; (met = reader.next()) != Met::kEnd && met != Met::kNoWayOn;) {
        if (met == Met::kTrace) (void)reader.samples().floats(reader.definition());
        // Every trace takes a header's bytes.
        if (met == Met::kTrace && ++traces > size) __builtin_trap();
    }
    return 0;
}
