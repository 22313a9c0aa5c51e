#include "platform/shared_library.h"

#include <windows.h>

namespace halvern {

std::optional<SharedLibrary> SharedLibrary::open(const std::string& name) {
    const HMODULE handle = LoadLibraryA(name.c_str());
    if (!handle) return {};
    return SharedLibrary(handle);
}

SharedLibrary::Address SharedLibrary::address(const char* name) const {
    return reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(handle_), name));
}

void SharedLibrary::close() {
    if (handle_) FreeLibrary(static_cast<HMODULE>(handle_));
    handle_ = nullptr;
}

}  // namespace halvern
