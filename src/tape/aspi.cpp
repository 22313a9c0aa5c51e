#include "tape/aspi.h"

#include <cstdlib>

namespace halvern {

int AspiLayer::open(const std::string& file) {
    if (is_open()) return 0;
    std::optional<SharedLibrary> library = SharedLibrary::open(file);
    if (!library) {
        report_.Log("LoadLibrary WNASPI32.DLL failed!\n");
        return -1;
    }
    const auto support_info = library->function<unsigned()>("GetASPI32SupportInfo");
    send_ = library->function<unsigned(void*)>("SendASPI32Command");
    bool found = support_info && send_;
    if (found && std::getenv("ASPI_MALLOC")) {
        get_buffer_ = library->function<int(void*)>("GetASPI32Buffer");
        free_buffer_ = library->function<int(void*)>("FreeASPI32Buffer");
        found = has_buffer_functions();
    }
    if (!found) {
        report_.Log("Failed to find ASPI functions in WNASPI32.DLL\n");
        return -1;
    }
    // Bits 8-15 say how the manager is, bits 0-7 how many adapters it drives.
    const unsigned info = support_info();
    if (static_cast<int>(info >> 8 & 0xFF) != kComplete) {
        report_.Log("ASPI Manager not loaded?\n");
        return -1;
    }
    adapters_ = static_cast<int>(info & 0xFF);
    library_ = std::move(library);
    return 0;
}

int AspiLayer::send(void* request) const {
    if (!is_open()) {
        report_.Log("aspi_open() not called?\n");
        return -1;
    }
    return static_cast<int>(send_(request));
}

void report_sense(const SenseData& sense, const Reporter& report) {
    report.Log("%s\n", describe_sense(sense).c_str());
}

}  // namespace halvern
