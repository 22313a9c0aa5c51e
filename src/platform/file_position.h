#pragma once

#include <cstdint>
#include <cstdio>

namespace halvern {

/// std::fseek for files beyond 2 GiB on every system. `origin` is SEEK_SET, SEEK_CUR or SEEK_END.
/// 0, or -1 when the stream cannot go there.
[[nodiscard]] int seek_stream(std::FILE* stream, std::int64_t offset, int origin);

}  // namespace halvern
