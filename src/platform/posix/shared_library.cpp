#include "platform/shared_library.h"

#include <dlfcn.h>

namespace halvern {

std::optional<SharedLibrary> SharedLibrary::open(const std::string& name) {
    void* const handle = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) return {};
    return SharedLibrary(handle);
}

SharedLibrary::Address SharedLibrary::address(const char* name) const {
    return reinterpret_cast<Address>(::dlsym(handle_, name));
}

void SharedLibrary::close() {
    if (handle_) ::dlclose(handle_);
    handle_ = nullptr;
}

}  // namespace halvern
