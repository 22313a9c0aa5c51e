#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>

#include "segy/segy_source.h"
#include "tape/tape_change.h"

namespace halvern {

/// SEG-Y on tape, block by block: 3200 bytes of text header, 400 of binary header, then a block a
/// trace. One filemark is stepped over, two in a row end the tape; further tapes of the same layout
/// are read on. What goes wrong is said by the item it belongs to, and ends the job.
class SegyTapeSource final : public SegySource {
public:
    SegyTapeSource(const FlowItem& item, TapeDevice& device, TapeChange& change)
        : item_(item), device_(device), change_(change) {}

    [[nodiscard]] bool read_line_header(std::span<std::byte, kLineHeaderBytes> header) override;
    [[nodiscard]] bool skip_text_headers(int count) override;
    std::span<const std::byte> next_record(std::int64_t record_bytes, std::int64_t wanted) override;

private:
    bool read_headers(std::span<std::byte, kLineHeaderBytes> header, bool first_tape);
    bool next_tape();
    bool takes_over(std::span<const std::byte, kLineHeaderBytes> header);
    int next_block();
    bool text_header_was_read();

    const FlowItem& item_;
    TapeDevice& device_;
    TapeChange& change_;
    std::array<std::byte, kLineHeaderBytes> header_{};  // of the first tape
    std::array<std::byte, kLineHeaderBytes> ahead_{};   // a block that may begin another line
    std::optional<int> read_ahead_;  // what reading the block behind that one gave, if not used yet
    bool ended_ = false;
};

}  // namespace halvern
