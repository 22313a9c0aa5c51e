#include "segy/segy_refusal.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "foundation/words.h"
#include "segy/segy_layout.h"
#include "trace/big_endian.h"
#include "trace/file_kind.h"

namespace halvern {

namespace {

using Kind = SegyRefusal::Kind;

constexpr std::size_t kFormatCode = 3224;
constexpr std::size_t kByteOrder = 3296;  // 01020304 from revision 2 on

std::uint32_t swapped(std::uint32_t two_bytes) {
    return (two_bytes & 0xFF) << 8 | (two_bytes >> 8 & 0xFF);
}

/// Bytes of a sample by the standard's format code; 0 for a code that it does not have.
int sample_bytes_of(int code) {
    switch (code) {
        case 8:
        case 16:
            return 1;
        case 3:
        case 11:
            return 2;
        case 7:
        case 15:
            return 3;
        case 1:
        case 2:
        case 4:
        case 5:
        case 10:
            return 4;
        case 6:
        case 9:
        case 12:
            return 8;
        default:
            return 0;
    }
}

SegyRefusal of_kind(FileKind kind) {
    switch (kind) {
        case FileKind::kDataset:
            return {Kind::kDataset};
        case FileKind::kTapeImage:
            return {Kind::kTapeImage};
        case FileKind::kSegd:
            return {Kind::kSegd};
        case FileKind::kSpsText:
            return {Kind::kSpsText};
        case FileKind::kText:
            return {Kind::kText};
        case FileKind::kOther:
            break;
    }
    return {};
}

/// Whether the file is whole records of a trace header and 4-byte samples, as many as the header
/// itself says, from its first byte on.
SegyRefusal bare_traces(BlockReader& file, std::span<const std::byte> text) {
    constexpr std::size_t kCount = 114, kInterval = 116;
    if (is_text(text)) return {};
    const auto count = get_u16(text.subspan<kCount, 2>());
    const auto interval = get_u16(text.subspan<kInterval, 2>());
    for (const bool swap : {true, false}) {
        const std::uint32_t samples = swap ? swapped(count) : count;
        const std::int64_t record = kTraceHeaderBytes + std::int64_t{samples} * 4;
        if (samples == 0 || interval == 0 || file.size() % record != 0) continue;
        if (file.size() > record) {
            file.seek(record + static_cast<std::int64_t>(kCount));
            const std::span<const std::byte> second = file.next(4);
            if (second.size() < 4 || get_u16(second.first<2>()) != count ||
                get_u16(second.last<2>()) != interval) {
                continue;
            }
        }
        return {Kind::kBareTraces, counted(file.size() / record, "trace") + " of " +
                                       counted(samples, "sample") + ", numbers with the " +
                                       (swap ? "least" : "highest") + " byte first"};
    }
    return {};
}

SegyRefusal byte_order(const LineHeader& line) {
    const std::uint32_t code = get_u16(line.bytes().subspan<kFormatCode, 2>());
    const std::uint32_t constant = get_u32(line.bytes().subspan<kByteOrder, 4>());
    if (constant == 0x02010403) return {Kind::kSwappedPairs};
    if (constant == 0x04030201) return {Kind::kLittleEndian, "its byte order constant says so"};
    if (swapped(code) < 1 || swapped(code) > 16) return {};
    return {Kind::kLittleEndian, "its format code is " + std::to_string(code) + ", and " +
                                     std::to_string(swapped(code)) + " the other way round"};
}

SegyRefusal revision_2(const LineHeader& line, const SegyLayout& layout) {
    if (segy_revision(line) < 2) return {};
    const auto bytes = line.bytes();
    const std::int64_t samples = get_u32(bytes.subspan<3268, 4>());
    // The count took four bytes in revision 2.0 and takes two since.
    const bool minor_0 = bytes[3501] == std::byte{0};
    const std::int64_t headers =
        minor_0 ? get_u32(bytes.subspan<3506, 4>()) : get_u16(bytes.subspan<3506, 2>());
    const std::uint64_t first =
        std::uint64_t{get_u32(bytes.subspan<3520, 4>())} << 32 | get_u32(bytes.subspan<3524, 4>());
    const std::uint32_t trailers = get_u32(bytes.subspan<3528, 4>());
    std::string evidence;
    if (samples != 0 && samples != layout.samples) {
        evidence = "traces of " + in_words(samples) + " samples";
    } else if (headers != 0) {
        evidence = "further headers of each trace";
    } else if (first != 0 && first != static_cast<std::uint64_t>(layout.first_record())) {
        evidence = "a first trace at another byte than " + in_words(layout.first_record());
    } else if (trailers != 0) {
        evidence = "trailer records after the traces";
    } else {
        return {};
    }
    return {Kind::kRevision2Layout, evidence};
}

SegyRefusal text_for_traces(BlockReader& file, const SegyLayout& layout) {
    if (layout.text_headers < 0 || layout.first_record() >= file.size()) return {};
    file.seek(layout.first_record());
    const std::span<const std::byte> bytes = file.next(static_cast<std::size_t>(
        std::min<std::int64_t>(file.size() - layout.first_record(), SegyLayout::kTextHeaderBlock)));
    // The header of a trace is never text, whatever its samples look like.
    if (bytes.size() < kTraceHeaderBytes || !is_text(bytes.first(kTraceHeaderBytes)) ||
        !is_text(bytes)) {
        return {};
    }
    return {Kind::kTextForTraces, "at byte " + in_words(layout.first_record())};
}

SegyRefusal other_samples(BlockReader& file, const SegyLayout& layout) {
    const int code = layout.format_code;
    const std::int64_t data = file.size() - layout.first_record();
    if (code == 1 || code == 3 || code == 5 || layout.samples <= 0 || data <= 0) return {};
    const int own_bytes = sample_bytes_of(code);
    const std::int64_t own = kTraceHeaderBytes + std::int64_t{layout.samples} * own_bytes;
    if (own_bytes != 0 && data % own == 0 && data % layout.record_bytes() != 0) {
        return {Kind::kOtherSampleSize, "format code " + std::to_string(code) + ", samples of " +
                                            counted(own_bytes, "byte")};
    }
    // A few traces from all over the file: enough, and soon read.
    constexpr std::int64_t kTraces = 16, kMostSamples = 1000;
    const std::int64_t traces = data / layout.record_bytes();
    const std::int64_t step = std::max<std::int64_t>(traces / kTraces, 1);
    const std::int64_t samples = std::min<std::int64_t>(layout.samples, kMostSamples);
    std::int64_t words = 0, numbers = 0;
    for (std::int64_t trace = 0; trace < traces; trace += step) {
        file.seek(layout.record_offset(trace) + kTraceHeaderBytes);
        std::span<const std::byte> bytes = file.next(static_cast<std::size_t>(samples) * 4);
        for (; bytes.size() >= 4; bytes = bytes.subspan(4)) {
            const float value = get_f32(bytes.first<4>());
            if (value == 0) continue;
            ++words;
            if (std::isnormal(value)) ++numbers;
        }
    }
    if (words == 0 || numbers * 2 >= words) return {};
    return {Kind::kNotIeee, "format code " + std::to_string(code)};
}

}  // namespace

std::string SegyRefusal::text() const {
    const auto what = [this]() -> std::string {
        switch (kind) {
            case Kind::kNone:
                break;
            case Kind::kDataset:
                return "is the main file of a dataset, not SEG-Y";
            case Kind::kTapeImage:
                return "is a tape image, not a SEG-Y file; a tape input reads it";
            case Kind::kSegd:
                return "is SEG-D, not SEG-Y";
            case Kind::kSpsText:
                return "is SPS text, not SEG-Y";
            case Kind::kText:
                return "is text in lines, not SEG-Y";
            case Kind::kBareTraces:
                return "holds bare traces without the line header of SEG-Y";
            case Kind::kLittleEndian:
                return "has its bytes the wrong way round for SEG-Y (little-endian)";
            case Kind::kSwappedPairs:
                return "has its bytes exchanged in pairs";
            case Kind::kRevision2Layout:
                return "is laid out by fields of revision 2 that are not read";
            case Kind::kTextForTraces:
                return "holds text where its first trace is due";
            case Kind::kOtherSampleSize:
                return "holds samples of a size that is not read";
            case Kind::kNotIeee:
                return "holds samples that are no IEEE numbers";
        }
        return {};
    };
    return evidence.empty() ? what() : what() + ": " + evidence;
}

SegyRefusal refuse_segy(BlockReader& file) {
    if (SegyRefusal other = of_kind(file_kind(file))) return other;
    file.seek(0);
    LineHeader line;
    const std::span<const std::byte> header = file.next(kLineHeaderBytes);
    if (header.size() < kLineHeaderBytes) return {};
    std::ranges::copy(header, line.bytes().begin());
    const SegyLayout layout = SegyLayout::parse(line);
    if (SegyRefusal bare = bare_traces(file, line.bytes().first<kTextHeaderBytes>())) return bare;
    if (SegyRefusal order = byte_order(line)) return order;
    if (SegyRefusal moved = revision_2(line, layout)) return moved;
    if (!layout.problem().empty()) return {};  // which the reader refuses by itself
    if (SegyRefusal text = text_for_traces(file, layout)) return text;
    return other_samples(file, layout);
}

}  // namespace halvern
