#pragma once

#include <string>
#include <system_error>

namespace halvern {

/// Creates an empty file of a name that was free, in one step: of two processes that try the same
/// name, one gets it. No error: created; std::errc::file_exists: taken; else why it failed.
[[nodiscard]] std::error_code create_exclusively(const std::string& path);

}  // namespace halvern
