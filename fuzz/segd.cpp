#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/messages.h"
#include "segd/description.h"
#include "segd/record_reader.h"
#include "segd/samples.h"

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
    const bool blocked = (mode & 1) != 0;
    CutSource source(std::as_bytes(std::span(data + 1, size - 1)), (mode & 2) == 0);
    segd::RecordReader reader(source, static_cast<segd::Dialect>(mode >> 2 & 3), blocked);
    std::vector<float> samples;
    for (;;) {
        const auto record = reader.next_record();
        if (record == segd::RecordReader::Record::kEnd) break;
        if (record != segd::RecordReader::Record::kRecord) {
            if (reader.skip_file() != 0) break;
            continue;
        }
        for (segd::RecordReader::Next next;
             (next = reader.next_trace()) != segd::RecordReader::Next::kEndOfRecord;) {
            if (next != segd::RecordReader::Next::kTrace) continue;
            const segd::Trace& trace = reader.trace();
            samples.resize(static_cast<std::size_t>(std::min(trace.samples, 100'000)));
            segd::decode(reader.header().general().format, trace.raw, trace.set->descale, samples);
            segd::GroupBytes groups;
            groups[static_cast<std::size_t>(segd::Group::kCS)] =
                reader.header().descriptor(trace.set_index);
            groups[static_cast<std::size_t>(segd::Group::kXtn)] = reader.header().external();
            for (const char* line : {"W CS 31 BCD4", "W XTN 1 U4", "W CS 1 R4"}) {
                (void)segd::Transcription::parse(line)->value(groups);
            }
        }
    }
    (void)segd::Transcription::parse({reinterpret_cast<const char*>(data), size});
    return 0;
}
