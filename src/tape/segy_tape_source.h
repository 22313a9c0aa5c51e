#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>

#include "segy/segy_layout.h"
#include "segy/segy_source.h"
#include "tape/tape_device.h"

namespace halvern {

/// What a SEG-Y tape gave instead of a trace. Nothing is read after it until another tape begins.
struct SegyTapeEnding {
    enum class What {
        kNone,           ///< there are traces still
        kEndOfTape,      ///< two filemarks in a row, or the end of what is recorded
        kReadError,      ///< `why`, as the end of a sentence
        kShortBlock,     ///< a block of `bytes` where a trace takes `expected`
        kNoLineHeader,   ///< a block of `bytes` after a text header
        kUnusableLine,   ///< a further line header that `why`, as the end of a sentence
        kOtherLine,      ///< a further `line` header that differs from the first
        kNoTextHeaders,  ///< fewer extended text headers than a further `line` header announces
    };
    What what = What::kNone;
    std::int64_t bytes = 0;
    std::int64_t expected = 0;
    SegyLayout line;
    std::string why;
};

/// Whether a text header begins with this byte: "C" or a blank, in EBCDIC or ASCII. In a trace,
/// whose number in the line begins there, it would mean more than five hundred million traces
/// before it.
bool begins_text_header(std::byte first);

/// SEG-Y on tape, block by block: 3200 bytes of text header, 400 of binary header, then a block a
/// trace. One filemark is stepped over, two in a row end the tape; after a filemark another line
/// header of the same layout may follow, and after the end another tape.
class SegyTapeSource final : public SegySource {
public:
    explicit SegyTapeSource(TapeDevice& device) : device_(device) {}

    /// How long the blocks are that should hold the headers: 0 for one that is not there.
    struct HeaderBlocks {
        int text = 0;
        int line = 0;
        bool whole() const { return text >= kTextHeaderBytes && line >= kBinaryHeaderBytes; }
    };
    /// Reads the header blocks that the tape in the drive begins with. What they hold is given by
    /// read_line_header for the first tape, taken over by go_on for another.
    HeaderBlocks begin_tape();
    /// Goes on with the tape that has begun; false when ending() says why it cannot be.
    [[nodiscard]] bool go_on();

    /// Begins the tape if that has not been done.
    [[nodiscard]] bool read_line_header(std::span<std::byte, kLineHeaderBytes> header) override;
    [[nodiscard]] bool skip_text_headers(int count) override;
    std::span<const std::byte> next_record(std::int64_t record_bytes, std::int64_t wanted) override;

    const SegyTapeEnding& ending() const { return ending_; }
    const SegyLayout& first_line() const { return first_line_; }
    /// Further line headers on tapes so far, usable or not.
    int further_lines() const { return further_lines_; }
    std::int64_t longer_blocks() const { return longer_blocks_; }  ///< that hold more than a trace

private:
    std::span<const std::byte> stop(SegyTapeEnding ending);
    bool text_header_was_read(bool may_be_trace);

    TapeDevice& device_;
    SegyLayout first_line_;
    std::array<std::byte, kLineHeaderBytes>
        header_{};                       // of the tape, or a block that may begin one
    std::optional<HeaderBlocks> begun_;  // the blocks that header_ was filled from
    std::optional<int> read_ahead_;  // what reading a block after that one gave, if not used yet
    std::int64_t longer_blocks_ = 0;
    int further_lines_ = 0;
    SegyTapeEnding ending_;
};

}  // namespace halvern
