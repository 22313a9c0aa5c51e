#include "platform/program_path.h"

#include <windows.h>

namespace halvern {

std::string reported_program_path() {
    std::string path(32768, '\0');  // the longest path that Windows knows
    path.resize(GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path;
}

}  // namespace halvern
