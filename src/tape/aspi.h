#pragma once

#include <optional>
#include <string>

#include "foundation/report.h"
#include "platform/shared_library.h"
#include "tape/sense.h"

namespace halvern {

/// The SCSI transport underneath the sequential-device library: WNASPI32.DLL, loaded while the
/// program runs. What fails is reported.
class AspiLayer {
public:
    explicit AspiLayer(const Reporter& report) : report_(report) {}

    static constexpr const char* kLibrary = "WNASPI32.DLL";
    static constexpr int kComplete = 1;  ///< a request's status once it has succeeded

    /// Loads the library from `file` and asks it for its host adapters. Its buffer functions are
    /// taken too when the environment has ASPI_MALLOC. 0, or -1.
    [[nodiscard]] int open(const std::string& file = kLibrary);
    bool is_open() const { return library_.has_value(); }
    int adapters() const { return adapters_; }
    bool has_buffer_functions() const { return get_buffer_ && free_buffer_; }

    /// Hands a request block, laid out as the library wants it, to the library. Its answer, or -1.
    [[nodiscard]] int send(void* request) const;

private:
    const Reporter& report_;
    std::optional<SharedLibrary> library_;
    unsigned (*send_)(void*) = nullptr;
    int (*get_buffer_)(void*) = nullptr;
    int (*free_buffer_)(void*) = nullptr;
    int adapters_ = 0;
};

/// Reports what a device says about a request that it refused.
void report_sense(const SenseData& sense, const Reporter& report);

}  // namespace halvern
