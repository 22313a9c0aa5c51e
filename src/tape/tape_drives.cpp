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

std::unique_ptr<TapeDevice> make_tape_device(const std::string& name, TapeUse use,
                                             const GlobalConfig& config, TapeClock& clock) {
    if (is_tape_image(name, config)) {
        return std::make_unique<TapeDevice>(
            name, [name, use] { return std::make_unique<ImageScsi>(name, use); },
            TapeDevice::kRetries, clock);
    }
    const TapeDeviceName* device = find_tape_device(name, config);
    const std::string whole = device ? whole_name(*device) : name;
    return std::make_unique<TapeDevice>(
        whole, [whole] { return load_system_scsi(whole); }, TapeDevice::kRetries, clock);
}

std::vector<std::string> enumerate_tape_drives() {
    std::vector<std::string> names;
    const std::unique_ptr<SequentialScsi> scsi = load_system_scsi("");
    for (int device = 0; scsi && device < 1024; ++device) {
        const int type = scsi->GetDeviceType(device);
        if (type == kNoDevice) break;
        if (type != kSequentialDevice) continue;
        const std::string system_name = scsi->GetSystemName(device);
        names.push_back(system_name.empty() ? tape_device_name(*scsi, device) : system_name);
    }
    return names;
}

}  // namespace halvern
