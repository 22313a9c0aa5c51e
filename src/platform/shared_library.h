#pragma once

#include <optional>
#include <string>
#include <utility>

namespace halvern {

/// A library that is loaded while the program runs, and released with this object; functions taken
/// from it must not outlive it. Move-only.
class SharedLibrary {
public:
    /// Looks for `name` as the system does: a path, or a name on its search path. Nothing when it
    /// is not there or cannot be loaded.
    [[nodiscard]] static std::optional<SharedLibrary> open(const std::string& name);

    ~SharedLibrary() { close(); }
    SharedLibrary(SharedLibrary&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)) {}
    SharedLibrary& operator=(SharedLibrary&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }

    /// The library's function of that name, or null, as in function<int(int)>("open_drive").
    template <class Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

private:
    explicit SharedLibrary(void* handle) : handle_(handle) {}
    using Address = void (*)();
    Address address(const char* name) const;
    void close();

    void* handle_;
};

}  // namespace halvern
