#include "platform/command_line.h"

namespace halvern {

std::vector<std::string> program_arguments(int argc, char** argv) { return {argv, argv + argc}; }

}  // namespace halvern
