#include "tape/segy_tape_source.h"

#include <algorithm>
#include <utility>

namespace halvern {

namespace {

using What = SegyTapeEnding::What;

SegyLayout layout_of(std::span<const std::byte, kLineHeaderBytes> header) {
    LineHeader line;
    std::ranges::copy(header, line.bytes().begin());
    return SegyLayout::parse(line);
}

}  // namespace

bool begins_text_header(std::byte first) {
    constexpr std::array kFirst = {std::byte{0xC3}, std::byte{0x40}, std::byte{'C'},
                                   std::byte{' '}};
    return std::ranges::find(kFirst, first) != kFirst.end();
}

SegyTapeSource::HeaderBlocks SegyTapeSource::begin_tape() {
    const auto read = [this](std::size_t at, int bytes) {
        const int count = std::max(device_.read_block(), 0);
        if (count >= bytes) {
            std::copy_n(device_.block().begin(), bytes,
                        header_.begin() + static_cast<std::ptrdiff_t>(at));
        }
        return count;
    };
    HeaderBlocks blocks{.text = read(0, kTextHeaderBytes)};
    if (blocks.text >= kTextHeaderBytes) blocks.line = read(kTextHeaderBytes, kBinaryHeaderBytes);
    begun_ = blocks;
    ending_ = {};
    read_ahead_.reset();
    return blocks;
}

bool SegyTapeSource::read_line_header(std::span<std::byte, kLineHeaderBytes> header) {
    if (!begun_) begin_tape();
    if (!begun_->whole()) {
        ending_ = {.what = What::kReadError, .why = device_.fault()};
        return false;
    }
    std::ranges::copy(header_, header.begin());
    first_line_ = layout_of(header_);
    return true;
}

bool SegyTapeSource::skip_text_headers(int count) {
    return count <= 0 || device_.skip_blocks(count) == 0;
}

bool SegyTapeSource::go_on() {
    const SegyLayout line = layout_of(header_);
    if (const std::string problem = line.problem(); !problem.empty()) {
        stop({.what = What::kUnusableLine, .why = problem});
    } else if (line.samples != first_line_.samples || line.interval != first_line_.interval ||
               line.format_code != first_line_.format_code) {
        stop({.what = What::kOtherLine, .line = line});
    } else if (!skip_text_headers(line.text_headers)) {
        stop({.what = What::kNoTextHeaders, .line = line});
    }
    return ending_.what == What::kNone;
}

std::span<const std::byte> SegyTapeSource::stop(SegyTapeEnding ending) {
    ending_ = std::move(ending);
    return {};
}

// Whether the block of 3200 bytes that was read is a text header: then a binary header follows,
// which header_ gets as well. If not, the block stays in header_, for it is a trace. A trace may be
// padded to the length of a text header; then only a block of a binary header's very length tells.
bool SegyTapeSource::text_header_was_read(bool may_be_trace) {
    std::ranges::copy(device_.block(), header_.begin());
    const int count = device_.read_block();
    if (may_be_trace ? count != kBinaryHeaderBytes : count < kBinaryHeaderBytes) {
        read_ahead_ = count;
        return false;
    }
    std::ranges::copy(device_.block().first(kBinaryHeaderBytes),
                      header_.begin() + kTextHeaderBytes);
    return true;
}

std::span<const std::byte> SegyTapeSource::next_record(std::int64_t record_bytes,
                                                       std::int64_t wanted) {
    const auto first = static_cast<std::size_t>(wanted);
    while (ending_.what == What::kNone) {
        int count = read_ahead_ ? *std::exchange(read_ahead_, {}) : device_.read_block();
        const bool after_filemark = count == TapeDevice::kNoData;
        if (after_filemark) count = device_.read_block();
        if (count == TapeDevice::kNoData) return stop({.what = What::kEndOfTape});
        if (count == TapeDevice::kFailed) {
            return stop({.what = What::kReadError, .why = device_.fault()});
        }
        // After a filemark another line may begin, with headers of its own.
        if (after_filemark && count == kTextHeaderBytes) {
            const bool may_be_trace =
                record_bytes <= kTextHeaderBytes && !begins_text_header(device_.block().front());
            if (text_header_was_read(may_be_trace)) {
                ++further_lines_;
                if (!go_on()) return {};
                continue;
            }
            if (!may_be_trace) {
                return stop({.what = What::kNoLineHeader, .bytes = std::max(*read_ahead_, 0)});
            }
            if (record_bytes < kTextHeaderBytes) ++longer_blocks_;
            return std::span(header_).first(first);
        }
        if (count < record_bytes) {
            return stop({.what = What::kShortBlock, .bytes = count, .expected = record_bytes});
        }
        if (count > record_bytes) ++longer_blocks_;
        return device_.block().first(first);
    }
    return {};
}

}  // namespace halvern
