#pragma once

#include <cstdint>
#include <string>

#include "platform/fault.h"

namespace halvern {

/// The bytes of a whole regular file; a fault when it cannot be opened, cannot be read to its end,
/// or holds more than `most_bytes`. Never part of a file.
inline constexpr std::int64_t kMostTextBytes = 16'000'000;
Result<std::string> read_text_file(const std::string& path,
                                   std::int64_t most_bytes = kMostTextBytes);

}  // namespace halvern
