#pragma once

#include <string>

#include "picture/canvas.h"
#include "platform/fault.h"

namespace halvern::picture {

/// Why this program cannot write PNG at all, if so.
Fault png_problem();

/// Writes a picture as PNG beside `path` and renames it, so that a fault leaves what was there.
Fault write_png(const std::string& path, const Canvas& canvas);

}  // namespace halvern::picture
