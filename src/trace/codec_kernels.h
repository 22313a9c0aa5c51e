#pragma once

#include <cstddef>
#include <cstdint>

namespace halvern {

/// What the search for a 16-bit scale finds.
struct Magnitude {
    float largest = 0;            ///< largest finite magnitude, 0 when there is none
    std::int64_t not_finite = 0;  ///< how many samples are NaN or infinite
};

/// The inner loops of the sample codecs, once for every sort of processor; all sets give the same
/// bits. `raw` is big-endian bytes at any alignment; nothing overlaps.
struct CodecKernels {
    const char* name;
    void (*swap_words)(const std::byte* raw, std::byte* words, std::size_t count);
    void (*decode_ibm)(const std::byte* raw, float* samples, std::size_t count);
    void (*encode_ibm)(const float* samples, std::byte* raw, std::size_t count);
    void (*decode_int16)(const std::byte* raw, float scale, float* samples, std::size_t count);
    Magnitude (*magnitude)(const float* samples, std::size_t count);
    /// Times `first`, times `second`, truncated; NaN is 0, the rest is held in 16 bits.
    void (*encode_int16)(const float* samples, float first, float second, std::byte* raw,
                         std::size_t count);
};

/// For any processor.
const CodecKernels& plain_codec_kernels();
/// For processors with AVX2; null when this one has not.
const CodecKernels* avx2_codec_kernels();
/// The fastest for this processor.
const CodecKernels& codec_kernels();

}  // namespace halvern
