#pragma once

#include <string>

#include "flow/parameter.h"

namespace halvern {

// Rows that the items which use tapes share.

/// DEVICE: the drive or image. The log line of outputs says "Input", too.
Parameter tape_device_parameter(std::string& device, const char* prompt);

/// EJECTWAIT, in seconds; 0: no eject. `position`: see Field.
Parameter eject_wait_parameter(int& seconds, int position);
/// The log line about it.
std::string eject_wait_line(int seconds);

}  // namespace halvern
