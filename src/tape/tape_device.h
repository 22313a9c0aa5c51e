#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "tape/sequential_scsi.h"
#include "tape/tape_clock.h"

namespace halvern {

/// One tape drive, by name. Knows only the table of calls; every device error is reported as a line
/// with the status code. Operations answer 0 or -1 unless said otherwise.
class TapeDevice {
public:
    static constexpr int kNoData = -1;  ///< a filemark or the end of the recorded data
    static constexpr int kFailed = -2;  ///< a hard error, already reported
    static constexpr int kRetries = 3;
    /// The longest block that a SCSI read can ask for.
    static constexpr int kLongestBlock = 0xFFFFFF;

    /// `name` is what the configuration calls the device: "VENDOR PRODUCT - path1_path2", or the
    /// system's own name of it. `retries`: how often a failed or empty read is tried again.
    TapeDevice(std::string name, ScsiLoader load, const Reporter& report, int retries = kRetries,
               TapeClock& clock = CurrentTapeClock());
    ~TapeDevice();
    TapeDevice(const TapeDevice&) = delete;
    TapeDevice& operator=(const TapeDevice&) = delete;

    /// Finds the device and waits up to 10 seconds for it to be ready. Nothing to do when open.
    [[nodiscard]] int open();
    bool is_open() const { return scsi_ != nullptr; }
    const std::string& name() const { return name_; }

    /// Reads one block into `buffer` and gives its length, kNoData or kFailed. Opens the device
    /// when it is not. A block longer than the buffer is cut to it.
    [[nodiscard]] int read(std::span<std::byte> buffer);
    /// The same with the device's own buffer, which block() shows until the next read. The buffer
    /// holds the longest block there can be, so nothing is cut.
    [[nodiscard]] int read_block();
    std::span<const std::byte> block() const { return block_; }
    /// After kFailed: what is wrong with the block, in words that can end a sentence.
    std::string fault() const;

    /// Writes one block: 0, kNoData when the tape is full, or kFailed.
    [[nodiscard]] int write(std::span<const std::byte> block);
    [[nodiscard]] int write_filemark();

    [[nodiscard]] int skip_files(int count);
    /// Forward over blocks: 0, kNoData (without a message) after a filemark that ended them, or
    /// kFailed.
    [[nodiscard]] int skip_blocks(int count);

    [[nodiscard]] int rewind();
    /// Rewinds, ejects and closes.
    [[nodiscard]] int unload();
    /// Rewinds, which brings what was written to the tape, and releases the drive.
    int close();

private:
    int find_device();
    int wait_until_ready();
    void report(const char* text, int status);

    std::string name_;
    ScsiLoader load_;
    const Reporter& report_;
    const int retries_;
    TapeClock& clock_;
    std::unique_ptr<SequentialScsi> scsi_;  // null: not open
    int failed_status_ = 0;                 // of the last call that failed
    int device_ = 0;                        // as the library enumerates devices
    int retries_left_;                      // of failed reads; full again after each good one
    std::unique_ptr<std::byte[]> buffer_;   // [kLongestBlock] once read_block was called
    std::span<const std::byte> block_;      // in buffer_
};

/// "VENDOR PRODUCT - path1_path2" of an enumerated device; question marks for what cannot be read.
std::string tape_device_name(SequentialScsi& scsi, int device);

}  // namespace halvern
