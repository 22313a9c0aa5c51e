#pragma once

#include <optional>
#include <string>

#include "tape/sequential_scsi.h"
#include "tape/tape_image.h"

namespace halvern {

/// What a tape image is opened for.
enum class TapeUse { kRead, kWrite };

/// A tape image as the one drive of a table of calls, with its path as the system's name.
///
/// Opened to read, a missing image is no device; opened to write, it is an empty tape, made by the
/// first block. Writing cuts off what came after: data there is written over only when the
/// operator agrees, and otherwise stays, with a report and kWriteProtected. Bad blocks give
/// kMediumError, what is no tape image or cannot be read kBadFormat with a report that says where;
/// the tape stays before both until they are spaced over, which a fault cannot be.
class ImageScsi final : public SequentialScsi {
public:
    ImageScsi(std::string path, TapeUse use, const Reporter& report);

    int GetDeviceType(int device) override;
    std::optional<std::string> GetVendorId(int) override { return "HALVERN"; }
    std::optional<std::string> GetProductId(int) override { return "TAPE IMAGE"; }
    std::uint32_t GetScsiPath(int) override { return 0; }
    std::string GetSystemName(int) override { return path_; }
    int TestUnitReady(int device) override;
    int Load(int) override { return tape_status::kGood; }
    int ReadVariableBlock(int device, std::span<std::byte> buffer, int flags) override;
    int WriteVariableBlock(int device, std::span<const std::byte> block) override;
    int WriteFilemarks(int device, int count) override;
    int Rewind(int device) override;
    int Unload(int device, int flags) override;
    int Space(int device, SpaceUnit unit, int count) override;
    int RequestSense(int device, MutableBytes<SenseData::kSize> sense) override;
    std::string GetFault(int) override { return fault_; }

private:
    int prepare_reading();
    int prepare_writing();
    int finish_writing();
    int answer(int status);
    int answer_fault();

    const std::string path_;
    const TapeUse use_;
    const Reporter& report_;
    std::int64_t position_ = 0;  // where the tape is while neither of the two is open
    std::optional<TapeImageReader> reader_;
    std::optional<TapeImageWriter> writer_;
    SenseData sense_;
    std::string fault_;                 // of the last block that could not be read
    std::int64_t reported_fault_ = -1;  // offset of the fault that was reported already
};

}  // namespace halvern
