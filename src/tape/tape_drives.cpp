#include "tape/tape_drives.h"

#include <algorithm>

namespace halvern {

std::string whole_name(const TapeDeviceName& device) {
    // Only a built name has " - " in it, so a plain type ("8mm") is never taken for a part of one.
    const bool split = device.type.find(" - ") != std::string::npos;
    return split ? device.name + " " + device.type : device.name;
}

const TapeDeviceName* find_tape_device(const std::string& name, const GlobalConfig& config) {
    const auto found =
        std::ranges::find_if(config.tape_devices(), [&](const TapeDeviceName& device) {
            return device.name == name || whole_name(device) == name;
        });
    return found == config.tape_devices().end() ? nullptr : &*found;
}

std::string first_tape_device(const GlobalConfig& config) {
    return config.tape_devices().empty() ? "NONE" : whole_name(config.tape_devices().front());
}

bool is_tape_image(const std::string& name, const GlobalConfig& config) {
    const TapeDeviceName* device = find_tape_device(name, config);
    return device && device->type == kImageType;
}

std::unique_ptr<TapeDevice> make_image_device(const std::string& path, TapeUse use,
                                              const Reporter& report, TapeClock& clock) {
    const auto load = [path, use](const Reporter& to) {
        return std::make_unique<ImageScsi>(path, use, to);
    };
    return std::make_unique<TapeDevice>(path, load, report, TapeDevice::kRetries, clock);
}

std::unique_ptr<TapeDevice> make_tape_device(const std::string& name, TapeUse use,
                                             const Reporter& report, const GlobalConfig& config,
                                             TapeClock& clock) {
    if (is_tape_image(name, config)) {
        return make_image_device(name, use, report, clock);
    }
    const TapeDeviceName* device = find_tape_device(name, config);
    const std::string whole = device ? whole_name(*device) : name;
    return std::make_unique<TapeDevice>(
        whole, [whole](const Reporter& to) { return load_system_scsi(whole, to); }, report,
        TapeDevice::kRetries, clock);
}

}  // namespace halvern
