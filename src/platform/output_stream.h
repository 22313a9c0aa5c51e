#pragma once

#include <cstdint>
#include <cstdio>

#include "platform/fault.h"

namespace halvern {

/// A C stream that only writes to `path`, from byte `offset` on, which may be beyond 2 GiB on every
/// system. `empties`: the file is made when it is missing, and emptied; otherwise it must be there,
/// and keeps its bytes. A fault for a directory or a pipe, which would hold us.
Result<std::FILE*> open_output_stream(const char* path, bool empties, std::int64_t offset);

}  // namespace halvern
