#pragma once

#include <cstdint>

namespace halvern {

/// How the samples of a raw record are encoded. The values are stored in flow files and datasets.
enum class SampleFormat : int {
    kIeee = 0,      ///< 32-bit IEEE float, big-endian
    kIbm = 1,       ///< 32-bit IBM float, big-endian
    kInt16 = 2,     ///< 16-bit integer, big-endian, times 2 to the power -WEIGHT
    kSegd8015 = 3,  ///< 20-bit binary, groups of 4 samples in 10 bytes; read only
    kSegd8048 = 4,  ///< base-16 float in 4 bytes; read only
    kSegd8036 = 5,  ///< 24-bit two's-complement integer; read only
};

/// Bytes a sample takes in a record of the system's own: 2 for kInt16, 4 otherwise.
constexpr int bytes_per_sample(SampleFormat format) {
    return format == SampleFormat::kInt16 ? 2 : 4;
}

/// The most samples that `bytes` bytes of a record can hold. SEG-D 8015 packs groups of 4 in 10
/// bytes: two of exponents, then two a sample.
constexpr std::int64_t samples_in(SampleFormat format, std::int64_t bytes) {
    switch (format) {
        case SampleFormat::kInt16:
            return bytes / 2;
        case SampleFormat::kSegd8036:
            return bytes / 3;
        case SampleFormat::kSegd8015: {
            const std::int64_t rest = bytes % 10;
            return bytes / 10 * 4 + (rest > 2 ? (rest - 2) / 2 : 0);
        }
        default:
            return bytes / 4;
    }
}

/// The bytes that `samples` samples take. The last group of 8015 is full unless `cut_group`, which
/// leaves out the words of the samples that it does not have.
constexpr std::int64_t bytes_of(SampleFormat format, std::int64_t samples, bool cut_group = false) {
    switch (format) {
        case SampleFormat::kInt16:
            return samples * 2;
        case SampleFormat::kSegd8036:
            return samples * 3;
        case SampleFormat::kSegd8015: {
            const std::int64_t rest = samples % 4;
            return samples / 4 * 10 + (rest == 0 ? 0 : cut_group ? 2 + 2 * rest : 10);
        }
        default:
            return samples * 4;
    }
}

/// What a log calls a format that data come in.
constexpr const char* format_name(SampleFormat format) {
    switch (format) {
        case SampleFormat::kInt16:
            return "16-BIT INTEGER";
        case SampleFormat::kIbm:
            return "IBM FLOAT";
        case SampleFormat::kIeee:
            return "IEEE FLOAT";
        default:
            return "Unknown";
    }
}

/// A trace header image: 240 bytes.
inline constexpr int kTraceHeaderBytes = 240;
/// The header block of a trace stream: 3200 bytes of text and 400 of binary header.
inline constexpr int kTextHeaderBytes = 3200;
inline constexpr int kBinaryHeaderBytes = 400;
inline constexpr int kLineHeaderBytes = kTextHeaderBytes + kBinaryHeaderBytes;

}  // namespace halvern
