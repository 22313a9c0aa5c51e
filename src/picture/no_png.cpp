#include "picture/png.h"

namespace halvern::picture {

std::string png_problem() { return "this program was built without libpng, which pictures need"; }

std::string write_png(const std::string&, const Canvas&) { return png_problem(); }

}  // namespace halvern::picture
