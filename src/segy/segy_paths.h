#pragma once

#include <string>

#include "foundation/prospect.h"

namespace halvern {

/// What a SEG-Y file parameter holds before a file is chosen: the name "NONE", in the directory of
/// the open prospect that SEG-Y files go to.
inline std::string default_segy_path() {
    // Put after the directory as it is: a file there that is called "none" is another.
    return CurrentProspect().is_open() ? CurrentProspect().path("segy") + "/NONE" : "NONE";
}

}  // namespace halvern
