#include "platform/log_file.h"

#include <windows.h>

namespace halvern {

namespace {
HANDLE as_handle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }
Fault last_fault() {
    return Fault::of_system({static_cast<int>(GetLastError()), std::system_category()});
}
}  // namespace

Result<LogFile> LogFile::create(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return last_fault();
    return LogFile(reinterpret_cast<std::intptr_t>(file));
}

Fault LogFile::write(std::string_view text) {
    while (!text.empty()) {
        DWORD count = 0;
        const bool written = WriteFile(as_handle(handle_), text.data(),
                                       static_cast<DWORD>(text.size()), &count, nullptr);
        if (!written || count == 0) return last_fault();
        text.remove_prefix(count);
    }
    return {};
}

void LogFile::close() {
    if (handle_ != kNone) CloseHandle(as_handle(handle_));
    handle_ = kNone;
}

}  // namespace halvern
