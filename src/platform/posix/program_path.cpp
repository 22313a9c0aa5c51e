#include "platform/program_path.h"

#include <filesystem>

namespace halvern {

std::string reported_program_path() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

}  // namespace halvern
