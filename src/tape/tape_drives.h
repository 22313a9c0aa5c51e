#pragma once

#include <memory>
#include <string>

#include "foundation/global_config.h"
#include "tape/image_scsi.h"
#include "tape/tape_device.h"

namespace halvern {

/// The type of a configured tape device that is an image: "TAPEDEVICE=PATH image".
inline constexpr const char* kImageType = "image";

/// What an item's DEVICE= calls a configured device. A drive's name that the configuration had to
/// split at its first blank ("VENDOR" and "PRODUCT - 4_0") is put together again.
std::string whole_name(const TapeDeviceName& device);

/// The configured device that DEVICE= names, or null. The vendor alone will do, and means that
/// vendor's first drive.
const TapeDeviceName* find_tape_device(const std::string& name,
                                       const GlobalConfig& config = CurrentConfig());

/// The first tape device of the configuration, or "NONE": the standard value of DEVICE=.
std::string first_tape_device(const GlobalConfig& config = CurrentConfig());

/// Whether the configuration says that the device of this name is an image.
bool is_tape_image(const std::string& name, const GlobalConfig& config = CurrentConfig());

/// A tape image as a device, not yet open. `report` must outlive it.
std::unique_ptr<TapeDevice> make_image_device(const std::string& path, TapeUse use,
                                              const Reporter& report,
                                              TapeClock& clock = CurrentTapeClock());

/// The device that an item's DEVICE= names, not yet open: an image when the configuration says so,
/// else a drive of this system. `report` must outlive it.
std::unique_ptr<TapeDevice> make_tape_device(const std::string& name, TapeUse use,
                                             const Reporter& report,
                                             const GlobalConfig& config = CurrentConfig(),
                                             TapeClock& clock = CurrentTapeClock());

/// What drives are reached through here: the vendor's library, or the system's own driver.
/// `name` is the drive that is wanted. Null, with a report, when there is no such thing.
std::unique_ptr<SequentialScsi> load_system_scsi(const std::string& name, const Reporter& report);

}  // namespace halvern
