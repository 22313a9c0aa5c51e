#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "tape/sequential_scsi.h"

namespace halvern {

/// The system calls that the tape driver is reached by, so that a test can play the drive. Answers
/// are those of the calls, with -errno instead of -1.
class TapeCalls {
public:
    struct Status {
        bool online = false;       ///< a tape is loaded and ready
        bool no_tape = false;      ///< the drive is empty or its door is open
        bool end_of_data = false;  ///< nothing is recorded from here on
        int block_number = -1;     ///< since the last filemark; -1: not known
    };
    virtual ~TapeCalls() = default;
    virtual bool is_device(const std::string& node) = 0;
    virtual int open(const std::string& node, int flags) = 0;
    virtual void close(int file) = 0;
    virtual ssize_t read(int file, std::span<std::byte> buffer) = 0;
    virtual ssize_t write(int file, std::span<const std::byte> block) = 0;
    virtual int operate(int file, int operation, int count) = 0;  ///< MTIOCTOP
    virtual int status(int file, Status& status) = 0;             ///< MTIOCGET
};
TapeCalls& SystemTapeCalls();

/// The system's tape driver: no-rewind nodes /dev/nst0, /dev/nst1 … in variable block mode.
class DriverScsi final : public SequentialScsi {
public:
    /// `wanted` that begins with "/" is the node to use, whatever its name; otherwise the drives
    /// are those that `classes` lists (a folder with one entry a node).
    explicit DriverScsi(const std::string& wanted, TapeCalls& calls = SystemTapeCalls(),
                        const std::string& classes = "/sys/class/scsi_tape");
    ~DriverScsi() override { shut(); }

    int GetDeviceType(int device) override;
    std::optional<std::string> GetVendorId(int device) override;
    std::optional<std::string> GetProductId(int device) override;
    std::uint32_t GetScsiPath(int device) override;
    std::string GetSystemName(int device) override;
    int TestUnitReady(int device) override;
    int Load(int device) override;
    int ReadVariableBlock(int device, std::span<std::byte> buffer, int flags) override;
    int WriteVariableBlock(int device, std::span<const std::byte> block) override;
    int WriteFilemarks(int device, int count) override;
    int Rewind(int device) override;
    int Unload(int device, int flags) override;
    int Space(int device, SpaceUnit unit, int count) override;
    int RequestSense(int device, MutableBytes<SenseData::kSize> sense) override;

private:
    struct Drive {
        std::string node;
        std::string folder;  // of its attributes; empty: none
    };
    std::optional<std::string> attribute(int device, const char* name) const;
    int open_node(const std::string& node, int extra_flags);
    int operate(int operation, int count);
    int answer(int error);
    ssize_t read_block(std::span<std::byte> buffer);
    int ask_block_number();
    void shut();

    TapeCalls& calls_;
    std::vector<Drive> drives_;
    int file_ = -1;
    int block_number_ = -1;         // since the last filemark, counted along; -1: not known
    std::size_t refused_read_;      // the least that the driver is known not to take in one read
    std::size_t first_read_;        // what a block is first tried with: taken so far
    std::vector<std::byte> spare_;  // for blocks longer than the caller's buffer
    SenseData sense_;
};

}  // namespace halvern
