#include "platform/file_lock.h"

#include <windows.h>

namespace halvern {

const bool FileLock::kBarsReplacing = true;

Result<FileLock> FileLock::take(const std::string& path, Missing missing) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY)) {
        return Fault("it is a directory");
    }
    const HANDLE file = CreateFileA(
        path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, missing == Missing::kCreate ? OPEN_ALWAYS : OPEN_EXISTING, 0, nullptr);
    const DWORD opened = GetLastError();
    if (file == INVALID_HANDLE_VALUE) {
        return Fault::of_system({static_cast<int>(opened), std::system_category()});
    }
    FileLock lock(reinterpret_cast<std::intptr_t>(file),
                  missing == Missing::kCreate && opened != ERROR_ALREADY_EXISTS);
    // Locks hold off reading and writing here; the last byte that a file could have does neither.
    OVERLAPPED last{};
    last.Offset = 0xFFFFFFFE;
    last.OffsetHigh = 0x7FFFFFFF;
    if (LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &last)) {
        return lock;
    }
    if (GetLastError() != ERROR_LOCK_VIOLATION && GetLastError() != ERROR_IO_PENDING) {
        return FileLock();
    }
    return Fault("another job is writing to it",
                 std::make_error_code(std::errc::device_or_resource_busy));
}

void FileLock::release() {
    if (handle_ != kNone) CloseHandle(reinterpret_cast<HANDLE>(handle_));
    handle_ = kNone;
}

}  // namespace halvern
