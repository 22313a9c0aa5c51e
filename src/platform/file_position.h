#pragma once

#include <cstdint>
#include <cstdio>

namespace halvern {

/// Makes byte `offset` of the file, which may be beyond 2 GiB on every system, the stream's next
/// one. 0, or -1 when it cannot go there.
[[nodiscard]] int seek_stream(std::FILE* stream, std::int64_t offset);

}  // namespace halvern
