#pragma once

#include <memory>
#include <string>

#include "tape/sequential_scsi.h"

namespace halvern {

/// The vendor's sequential-device library. Its functions have C names and the C calling convention,
/// take the device index first and give a tape_status:
///
///     int GetDeviceType(int device);                        the SCSI device type, 0x1F for none
///     int GetVendorId(int device, char text[9]);            8 characters and a zero byte
///     int GetProductId(int device, char text[17]);          16 characters and a zero byte
///     unsigned GetScsiPath(int device);
///     int TestUnitReady(int device);
///     int Load(int device);
///     int ReadVariableBlock(int device, void* buffer, int length, int flags);
///     int WriteVariableBlock(int device, const void* buffer, int length);
///     int WriteFilemarks(int device, int count);
///     int Rewind(int device);
///     int Unload(int device, int flags);
///     int Space(int device, int unit, int count);           unit 0 blocks, 1 filemarks
///     int RequestSense(int device, unsigned char* sense, int length);
inline constexpr const char* kTapeLibrary = "SEQSCSI.DLL";

/// Loads it, from `file`. Null, with the report "Can't find SEQSCSI.DLL!" or "SEQSCSI.DLL error!",
/// when it is missing or lacks one of the functions.
std::unique_ptr<SequentialScsi> load_library_scsi(const Reporter& report,
                                                  const std::string& file = kTapeLibrary);

}  // namespace halvern
