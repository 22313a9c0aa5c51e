#include "tape/tape_drives.h"

#include <algorithm>

namespace halvern {

namespace {

const TapeDeviceName* find_device(const std::string& name, const GlobalConfig& config) {
    const auto& devices = config.tape_devices();
    const auto found =
        std::find_if(devices.begin(), devices.end(),
                     [&](const TapeDeviceName& device) { return device.name == name; });
    return found == devices.end() ? nullptr : &*found;
}

}  // namespace

std::string first_tape_device(const GlobalConfig& config) {
    return config.tape_devices().empty() ? "NONE" : config.tape_devices().front().name;
}

bool is_tape_image(const std::string& name, const GlobalConfig& config) {
    const TapeDeviceName* device = find_device(name, config);
    return device && device->type == kImageType;
}

std::unique_ptr<TapeDevice> make_tape_device(const std::string& name, TapeUse use,
                                             const GlobalConfig& config, TapeClock& clock) {
    if (is_tape_image(name, config)) {
        return std::make_unique<TapeDevice>(
            name, [name, use] { return std::make_unique<ImageScsi>(name, use); },
            TapeDevice::kRetries, clock);
    }
    // Only a built name has " - " in it, so a plain type ("8mm") is never taken for one.
    const TapeDeviceName* device = find_device(name, config);
    const bool split = device && device->type.find(" - ") != std::string::npos;
    const std::string whole = split ? name + " " + device->type : name;
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
