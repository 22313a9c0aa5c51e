#pragma once

#include <cstddef>
#include <span>

#include "platform/block_writer.h"
#include "trace/line_header.h"

namespace halvern {

/// Writes a SEG-Y file front to back: the header block, then the records.
class SegyWriter : public BlockWriter {
public:
    /// The 3600 header bytes. 0 or -1.
    [[nodiscard]] int write_line_header(const LineHeader& line) {
        return write(line.bytes()) == kLineHeaderBytes ? 0 : -1;
    }
    /// One record. Gives the bytes that were accepted; fewer than the record's: it failed.
    [[nodiscard]] std::size_t write_record(std::span<const std::byte> record) {
        return write(record);
    }
};

}  // namespace halvern
