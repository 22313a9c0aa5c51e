#include <windows.h>

#include "platform/command_line.h"

namespace halvern {

std::vector<std::string> program_arguments(int, char**) {
    return split_command_line(GetCommandLineA());
}

}  // namespace halvern
