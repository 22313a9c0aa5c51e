#include "picture/png.h"

namespace halvern::picture {

Fault png_problem() { return Fault("this program was built without libpng, which pictures need"); }

Fault write_png(const std::string&, const Canvas&) { return png_problem(); }

}  // namespace halvern::picture
