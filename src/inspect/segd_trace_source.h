#pragma once

#include <string>

#include "inspect/trace_source.h"

namespace halvern {

/// SEG-D records from a disk file, or from a tape image.
TraceOpening open_segd_source(const std::string& path, const std::string& header_path, bool image);

}  // namespace halvern
