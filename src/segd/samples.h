#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace halvern::segd {

/// Whether samples of this format code can be read: 8015, 8036, 8048, 8058.
bool is_readable(int format);

/// Bytes that `samples` samples take. 8015 packs groups of 4 in 10 bytes; the last group is full
/// unless `cut_group`, which leaves out the words of the samples that it does not have.
std::int64_t bytes_of(int format, std::int64_t samples, bool cut_group = false);

/// The most samples that `bytes` bytes can hold.
std::int64_t samples_in(int format, std::int64_t bytes);

/// Multiplies IEEE samples by `descale`, in place; what is not finite becomes 0.
void descale_ieee(std::span<float> samples, double descale);

/// Decodes the samples of a trace and multiplies each by `descale`. `raw` may end early: what is
/// missing is 0. Values that are not finite become 0.
void decode(int format, std::span<const std::byte> raw, double descale, std::span<float> samples);

}  // namespace halvern::segd
