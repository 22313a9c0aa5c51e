#include "tape/segy_tape_source.h"

#include <algorithm>
#include <utility>

#include "segy/segy_layout.h"

namespace halvern {

namespace {

SegyLayout layout_of(std::span<const std::byte, kLineHeaderBytes> header) {
    LineHeader line;
    std::ranges::copy(header, line.bytes().begin());
    return SegyLayout::parse(line);
}

}  // namespace

bool SegyTapeSource::read_line_header(std::span<std::byte, kLineHeaderBytes> header) {
    if (!read_headers(header, true)) {
        TerminateJob(kJobError);
        return false;
    }
    std::ranges::copy(header, header_.begin());
    return true;
}

bool SegyTapeSource::read_headers(std::span<std::byte, kLineHeaderBytes> header, bool first_tape) {
    const char* const name = device_.name().c_str();
    const auto read = [&](const char* what, std::span<std::byte> place) {
        const int count = std::max(device_.read_block(), 0);
        if (count < static_cast<int>(place.size())) {
            const char* const text = "Failed to read '%s' from tape %s, got %d bytes\n";
            // A further tape without a header is a matter for the operator.
            if (first_tape)
                item_.Error(text, what, name, count);
            else
                item_.Message(text, what, name, count);
            return false;
        }
        std::copy_n(device_.block().begin(), place.size(), place.begin());
        item_.Message("Successfully read '%s' of %d bytes from tape %s\n", what, count, name);
        return true;
    };
    if (!read("SEG Y EBCDIC Header", header.first<kTextHeaderBytes>())) return false;
    item_.Message("Attempting to read 'SEG Y Line Header' from tape: %s\n", name);
    return read("SEG Y Line Header", header.last<kBinaryHeaderBytes>());
}

bool SegyTapeSource::skip_text_headers(int count) {
    return count <= 0 || device_.skip_blocks(count) == 0;
}

// Whether the traces behind a further line header can be read on; if not, the job has been ended.
bool SegyTapeSource::takes_over(std::span<const std::byte, kLineHeaderBytes> header) {
    const char* const name = device_.name().c_str();
    const SegyLayout first = layout_of(header_);
    const SegyLayout other = layout_of(header);
    const std::string problem = other.problem();
    if (!problem.empty()) {
        item_.Error("The further line header on tape %s %s.\n", name, problem.c_str());
    } else if (other.samples != first.samples || other.interval != first.interval ||
               other.format_code != first.format_code) {
        item_.Error(
            "The traces that follow on tape %s (%d samples of %.3f ms, format code %d) differ "
            "from those before (%d samples of %.3f ms, format code %d).\n",
            name, other.samples, other.interval.ms(), other.format_code, first.samples,
            first.interval.ms(), first.format_code);
    } else if (!skip_text_headers(other.text_headers)) {
        item_.Error("Tape %s ends before the %d extended text headers that it announces.\n", name,
                    other.text_headers);
    } else {
        return true;
    }
    TerminateJob(kJobError);
    return false;
}

bool SegyTapeSource::next_tape() {
    std::array<std::byte, kLineHeaderBytes> header;
    const bool more =
        change_.next(kTapeFinished, kNoHeaderOnTape, [&] { return read_headers(header, false); });
    return more && takes_over(header);
}

int SegyTapeSource::next_block() {
    return read_ahead_ ? *std::exchange(read_ahead_, {}) : device_.read_block();
}

// Whether the block of 3200 bytes that was read is a text header: then a binary header follows,
// which ahead_ gets as well. If not, the block stays in ahead_, for it may be a trace.
bool SegyTapeSource::text_header_was_read() {
    std::ranges::copy(device_.block(), ahead_.begin());
    const int count = device_.read_block();
    if (count < kBinaryHeaderBytes || count == kTextHeaderBytes) {
        read_ahead_ = count;
        return false;
    }
    std::ranges::copy(device_.block().first(kBinaryHeaderBytes), ahead_.begin() + kTextHeaderBytes);
    return true;
}

std::span<const std::byte> SegyTapeSource::next_record(std::int64_t record_bytes,
                                                       std::int64_t wanted) {
    const char* const name = device_.name().c_str();
    while (!ended_) {
        int count = next_block();
        const bool behind_filemark = count == TapeDevice::kNoData;
        if (behind_filemark) count = device_.read_block();
        if (count == TapeDevice::kNoData) {
            ended_ = !next_tape();
            continue;
        }
        if (count == TapeDevice::kFailed) {
            item_.Error("ERROR Read tape: %s\n", name);
            break;
        }
        // Behind a filemark another line may begin, with headers of its own.
        if (behind_filemark && count == kTextHeaderBytes) {
            if (text_header_was_read()) {
                item_.Message("Another line header follows on tape %s; its traces are read on.\n",
                              name);
                ended_ = !takes_over(ahead_);
                continue;
            }
            if (record_bytes == kTextHeaderBytes) {
                return std::span(ahead_).first(static_cast<std::size_t>(wanted));
            }
            item_.Error("Failed to read 'SEG Y Line Header' from tape %s, got %d bytes\n", name,
                        std::max(*read_ahead_, 0));
            break;
        }
        if (count < record_bytes) {
            item_.Error("ERROR: Read %d bytes from tape when %d bytes were expected.\n", count,
                        static_cast<int>(record_bytes));
            break;
        }
        return device_.block().first(static_cast<std::size_t>(wanted));
    }
    if (!ended_) {
        ended_ = true;
        TerminateJob(kJobError);
    }
    return {};
}

}  // namespace halvern
