#pragma once

#include <cstdint>

#include "foundation/words.h"
#include "platform/fault.h"

namespace halvern {

/// The fault of a reader that trace `index` (from 0) cannot be had from although `count` were there
/// when its file was opened; `why` names what the file says, if it says anything.
inline Fault lost_trace(std::int64_t index, std::int64_t count, const Fault& why) {
    return Fault("trace " + in_words(index + 1) + " of " + in_words(count) +
                     " cannot be read: " + (why ? why.reason() : "the file has become shorter"),
                 why.code());
}

}  // namespace halvern
