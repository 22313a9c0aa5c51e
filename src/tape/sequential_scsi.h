#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "foundation/report.h"
#include "tape/sense.h"

namespace halvern {

/// Status codes of the sequential-device library. 0 is success; kFilemark, kShortBlock and the two
/// small numbers are the library's own, the others are an additional sense code (high byte) with
/// its qualifier (low byte).
namespace tape_status {
inline constexpr int kGood = 0;
inline constexpr int kEndOfFile = 1;         ///< no data: the recorded file is over
inline constexpr int kEndOfData = 5;         ///< no data: nothing is recorded further on
inline constexpr int kNotReady = 0x0400;     ///< the unit is not ready
inline constexpr int kMediumError = 0x1100;  ///< the block cannot be read
inline constexpr int kWriteError = 0x0C00;
inline constexpr int kBadRequest = 0x2400;
inline constexpr int kWriteProtected = 0x2700;
inline constexpr int kBadFormat = 0x3100;  ///< what is recorded makes no sense
inline constexpr int kNoTape = 0x3A00;
inline constexpr int kDeviceFault = 0x4400;
inline constexpr int kFilemark = 0xA981;    ///< no data: a filemark; writing: no room is left
inline constexpr int kShortBlock = 0xA982;  ///< data, of another length than was asked for
}  // namespace tape_status

/// What GetDeviceType answers.
inline constexpr int kSequentialDevice = 1;
inline constexpr int kNoDevice = 0x1F;

/// The sequential-device library as one table of calls, each with the index of a device as the
/// library enumerates them from 0, and each answering a tape_status unless said otherwise. There
/// are three providers: the vendor's library, the Linux tape driver and tape images on disk.
/// Destruction releases what the provider holds, without moving the tape.
class SequentialScsi {
public:
    virtual ~SequentialScsi() = default;

    /// The SCSI device type, kSequentialDevice for a tape drive; kNoDevice after the last one.
    virtual int GetDeviceType(int device) = 0;
    /// 8 and 16 characters without trailing blanks; nothing when they cannot be read.
    virtual std::optional<std::string> GetVendorId(int device) = 0;
    virtual std::optional<std::string> GetProductId(int device) = 0;
    /// Where the device sits: bits 8-15 and 16-23 are the numbers of its name.
    virtual std::uint32_t GetScsiPath(int device) = 0;
    /// What the system calls the device ("/dev/nst0", an image's path), accepted instead of the
    /// name that is built from the three above; empty: nothing.
    virtual std::string GetSystemName(int /*device*/) { return {}; }

    virtual int TestUnitReady(int device) = 0;
    virtual int Load(int device) = 0;
    /// One block. kGood or kShortBlock: its first bytes are in `buffer`, and the sense data's
    /// residual is the buffer's length less the block's (negative when the block was longer and has
    /// been cut). The tape is then after the block. After a medium error it is before the block
    /// again where the drive allows that, so that a retry reads the same block.
    virtual int ReadVariableBlock(int device, std::span<std::byte> buffer, int flags) = 0;
    virtual int WriteVariableBlock(int device, std::span<const std::byte> block) = 0;
    virtual int WriteFilemarks(int device, int count) = 0;
    virtual int Rewind(int device) = 0;
    virtual int Unload(int device, int flags) = 0;
    /// Forward over `count` blocks or filemarks, to after the last one. Spacing over blocks stops
    /// after a filemark, with kFilemark.
    enum class SpaceUnit : int { kBlocks = 0, kFilemarks = 1 };
    virtual int Space(int device, SpaceUnit unit, int count) = 0;
    /// The sense data of the last command.
    virtual int RequestSense(int device, MutableBytes<SenseData::kSize> sense) = 0;
    /// What was wrong with the last block that could not be read, in words that can end a sentence;
    /// empty: no more than the status says.
    virtual std::string GetFault(int /*device*/) { return {}; }
};

/// Loads a provider each time a device is opened. It tells the reporter why it cannot and answers
/// null then.
using ScsiLoader = std::function<std::unique_ptr<SequentialScsi>(const Reporter& report)>;

}  // namespace halvern
