#include "platform/log_file.h"

#include <windows.h>

namespace halvern {

namespace {
HANDLE as_handle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }
}  // namespace

std::optional<LogFile> LogFile::create(const std::string& path) {
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return {};
    return LogFile(reinterpret_cast<std::intptr_t>(file));
}

void LogFile::write(std::string_view text) {
    while (!text.empty()) {
        DWORD count = 0;
        const bool written = WriteFile(as_handle(handle_), text.data(),
                                       static_cast<DWORD>(text.size()), &count, nullptr);
        if (!written || count == 0) return;
        text.remove_prefix(count);
    }
}

void LogFile::close() {
    if (handle_ != kNone) CloseHandle(as_handle(handle_));
    handle_ = kNone;
}

}  // namespace halvern
