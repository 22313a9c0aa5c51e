#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/fault.h"
#include "segy/segy_refusal.h"
#include "trace/sample_format.h"

namespace halvern {

/// Where the bytes of a SEG-Y stream come from: a disk file here, a tape elsewhere. It delivers the
/// stream's parts in order; what they mean is the reader's business.
class SegySource {
public:
    virtual ~SegySource() = default;

    /// The two header blocks. False when fewer bytes are there.
    [[nodiscard]] virtual bool read_line_header(std::span<std::byte, kLineHeaderBytes> header) = 0;
    /// Steps over that many extended text headers, after the line header.
    [[nodiscard]] virtual bool skip_text_headers(int count) = 0;
    /// The first `wanted` bytes of the next record of `record_bytes`, lent until the next call; the
    /// source is then after the whole record. Fewer bytes: the data end here, or failed.
    virtual std::span<const std::byte> next_record(std::int64_t record_bytes,
                                                   std::int64_t wanted) = 0;

    // A disk file can also be measured, examined, positioned and written over.

    /// Why bytes are missing that it had when it was opened; none at the end of the data.
    virtual Fault fault() const { return {}; }
    /// Why it must not be read as SEG-Y. Before the line header is read.
    virtual SegyRefusal refusal() { return {}; }
    /// Its size, or -1 where that is not known before the end.
    virtual std::int64_t size() const { return -1; }
    /// The next record begins at `offset`.
    [[nodiscard]] virtual bool seek(std::int64_t /*offset*/) { return false; }
    /// Writes bytes over those at `offset`; a later read there sees them. 0 or -1.
    [[nodiscard]] virtual int overwrite(std::int64_t /*offset*/,
                                        std::span<const std::byte> /*bytes*/) {
        return -1;
    }
};

/// A SEG-Y file on disk.
Result<std::unique_ptr<SegySource>> open_segy_file(const std::string& path);

}  // namespace halvern
