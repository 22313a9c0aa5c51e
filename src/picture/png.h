#pragma once

#include <string>

#include "picture/canvas.h"

namespace halvern::picture {

/// Why this program cannot write PNG at all; empty when it can.
std::string png_problem();

/// Writes a picture as PNG, replacing the file. Why that failed, or an empty text; there is no file
/// then.
[[nodiscard]] std::string write_png(const std::string& path, const Canvas& canvas);

}  // namespace halvern::picture
