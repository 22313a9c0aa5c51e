#include "platform/input_file.h"

#include <windows.h>

#include <algorithm>

namespace halvern {

namespace {
HANDLE as_handle(std::intptr_t value) { return reinterpret_cast<HANDLE>(value); }

Fault last_fault() {
    return Fault::of_system({static_cast<int>(GetLastError()), std::system_category()});
}
}  // namespace

Result<InputFile> InputFile::open(const std::string& path) {
    const HANDLE handle = CreateFileA(path.c_str(), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return last_fault();
    InputFile file(reinterpret_cast<std::intptr_t>(handle), 0);
    LARGE_INTEGER size{};
    if (GetFileType(handle) != FILE_TYPE_DISK) return Fault("it is no regular file");
    if (!GetFileSizeEx(handle, &size)) return last_fault();
    file.size_ = size.QuadPart;
    return file;
}

std::size_t InputFile::read_at(std::int64_t offset, std::span<std::byte> bytes,
                               Fault& fault) const {
    constexpr std::size_t kMost = std::size_t{1} << 30;  // of one call, whose count is 32 bits
    std::size_t done = 0;
    while (done < bytes.size()) {
        const std::int64_t place = offset + static_cast<std::int64_t>(done);
        OVERLAPPED at{};
        at.Offset = static_cast<DWORD>(place & 0xFFFFFFFF);
        at.OffsetHigh = static_cast<DWORD>(place >> 32);
        const DWORD wanted = static_cast<DWORD>(std::min(bytes.size() - done, kMost));
        DWORD count = 0;
        if (!ReadFile(as_handle(handle_), bytes.data() + done, wanted, &count, &at)) {
            if (GetLastError() != ERROR_HANDLE_EOF) fault = last_fault();
            break;
        }
        if (count == 0) break;
        done += count;
    }
    return done;
}

void InputFile::close() {
    if (handle_ != kNone) CloseHandle(as_handle(handle_));
    handle_ = kNone;
}

}  // namespace halvern
