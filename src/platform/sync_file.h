#pragma once

#include <string>

#include "platform/fault.h"

namespace halvern {

/// Waits until what was written to the file is on the disk.
Fault sync_file(const std::string& path);

}  // namespace halvern
