#pragma once

#include <cstddef>
#include <functional>
#include <span>
#include <string>

#include "segd/record_header.h"

namespace halvern::segd {

/// Splits a disk file of SEG-D records, as recorders write them to disk, into the blocks that they
/// are on tape: a label, the header, each trace, the trailer. For make_image; says why the file
/// cannot be split.
std::string split_records(const std::string& file, Dialect dialect,
                          const std::function<int(std::span<const std::byte>)>& block);

}  // namespace halvern::segd
