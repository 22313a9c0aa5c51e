#include "platform/replace_file.h"

#include <windows.h>

namespace halvern {

namespace {
std::error_code last_error() { return {static_cast<int>(GetLastError()), std::system_category()}; }
}  // namespace

std::error_code replace_file(const std::string& path, std::string_view bytes, Reach reach) {
    const std::string beside = path + ".new" + std::to_string(GetCurrentProcessId());
    const HANDLE file = CreateFileA(beside.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return last_error();
    std::error_code error;
    while (!error && !bytes.empty()) {
        DWORD count = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr)) {
            error = last_error();
        }
        bytes.remove_prefix(count);
    }
    if (!error && reach == Reach::kDisk && !FlushFileBuffers(file)) error = last_error();
    CloseHandle(file);
    if (!error && !MoveFileExA(beside.c_str(), path.c_str(),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        error = last_error();
    }
    if (error) DeleteFileA(beside.c_str());
    return error;
}

}  // namespace halvern
