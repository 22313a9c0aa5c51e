#include "platform/create_file.h"

#include <windows.h>

namespace halvern {

std::error_code create_exclusively(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        const DWORD why = GetLastError();
        if (why == ERROR_FILE_EXISTS) return std::make_error_code(std::errc::file_exists);
        return {static_cast<int>(why), std::system_category()};
    }
    CloseHandle(file);
    return {};
}

}  // namespace halvern
