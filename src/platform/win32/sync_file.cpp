#include "platform/sync_file.h"

#include <windows.h>

namespace halvern {

Fault sync_file(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    const bool done = file != INVALID_HANDLE_VALUE && FlushFileBuffers(file);
    const DWORD why = GetLastError();
    if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
    if (done) return {};
    return Fault::of_system({static_cast<int>(why), std::system_category()});
}

}  // namespace halvern
