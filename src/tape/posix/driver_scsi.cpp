#include "tape/posix/driver_scsi.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mtio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kFirstRead = 1024 * 1024;   // most blocks are shorter, most drivers allow it
constexpr std::size_t kSmallestRead = 64 * 1024;  // every driver allows it
constexpr std::size_t kTooLongRead = 0x1000000;   // the count of a SCSI read has 24 bits
constexpr std::size_t kFinestStep = 1024;         // of the search for what a driver allows

class DriverCalls final : public TapeCalls {
public:
    bool is_device(const std::string& node) override {
        std::error_code ignored;
        return fs::is_character_file(node, ignored);
    }
    int open(const std::string& node, int flags) override {
        const int file = ::open(node.c_str(), flags | O_CLOEXEC);
        return file < 0 ? -errno : file;
    }
    void close(int file) override { ::close(file); }
    ssize_t read(int file, std::span<std::byte> buffer) override {
        return result(::read(file, buffer.data(), buffer.size()));
    }
    ssize_t write(int file, std::span<const std::byte> block) override {
        return result(::write(file, block.data(), block.size()));
    }
    int operate(int file, int operation, int count) override {
        mtop command{};
        command.mt_op = static_cast<short>(operation);
        command.mt_count = count;
        return ::ioctl(file, MTIOCTOP, &command) < 0 ? -errno : 0;
    }
    int status(int file, Status& status) override {
        mtget answer{};
        if (::ioctl(file, MTIOCGET, &answer) < 0) return -errno;
        status = {.online = GMT_ONLINE(answer.mt_gstat) != 0,
                  .no_tape = GMT_DR_OPEN(answer.mt_gstat) != 0,
                  .end_of_data = GMT_EOD(answer.mt_gstat) != 0,
                  .block_number = static_cast<int>(answer.mt_blkno)};
        return 0;
    }

private:
    static ssize_t result(ssize_t count) { return count < 0 ? -errno : count; }
};

bool is_no_rewind_node(const std::string& name) {
    return name.size() > 3 && name.starts_with("nst") &&
           std::all_of(name.begin() + 3, name.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

TapeCalls& SystemTapeCalls() {
    static DriverCalls calls;
    return calls;
}

DriverScsi::DriverScsi(const std::string& wanted, TapeCalls& calls, const std::string& classes)
    : calls_(calls), refused_read_(kTooLongRead), first_read_(kFirstRead) {
    if (wanted.starts_with("/")) {
        if (calls_.is_device(wanted)) drives_.push_back({.node = wanted, .folder = {}});
        return;
    }
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(classes, ignored)) {
        const std::string name = entry.path().filename().string();
        if (is_no_rewind_node(name)) {
            drives_.push_back(
                {.node = "/dev/" + name, .folder = entry.path().string() + "/device"});
        }
    }
    const auto shorter_or_less = [](const Drive& a, const Drive& b) {
        return std::pair(a.node.size(), a.node) < std::pair(b.node.size(), b.node);
    };
    std::sort(drives_.begin(), drives_.end(), shorter_or_less);
}

int DriverScsi::GetDeviceType(int device) {
    return device >= 0 && device < static_cast<int>(drives_.size()) ? kSequentialDevice : kNoDevice;
}

std::optional<std::string> DriverScsi::attribute(int device, const char* name) const {
    const Drive& drive = drives_[static_cast<std::size_t>(device)];
    std::ifstream file(drive.folder + "/" + name);
    std::string text;
    if (drive.folder.empty() || !std::getline(file, text)) return {};
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::optional<std::string> DriverScsi::GetVendorId(int device) {
    return attribute(device, "vendor");
}

std::optional<std::string> DriverScsi::GetProductId(int device) {
    return attribute(device, "model");
}

// Target in bits 8-15 and unit in bits 16-23, from "host:channel:target:unit".
std::uint32_t DriverScsi::GetScsiPath(int device) {
    const Drive& drive = drives_[static_cast<std::size_t>(device)];
    std::error_code error;
    const std::string address = fs::canonical(drive.folder, error).filename().string();
    unsigned host = 0, channel = 0, target = 0, unit = 0;
    if (error ||
        std::sscanf(address.c_str(), "%u:%u:%u:%u", &host, &channel, &target, &unit) != 4) {
        return 0;
    }
    return (target & 0xFF) << 8 | (unit & 0xFF) << 16 | (host & 0xFF);
}

std::string DriverScsi::GetSystemName(int device) {
    return drives_[static_cast<std::size_t>(device)].node;
}

void DriverScsi::shut() {
    if (file_ >= 0) calls_.close(file_);
    file_ = -1;
}

int DriverScsi::answer(int error) {
    sense_ = {};
    int status = tape_status::kDeviceFault;
    switch (error) {
        case 0:
            return tape_status::kGood;
        case ENOMEDIUM:
            status = tape_status::kNoTape;
            break;
        case EROFS:
        case EACCES:
        case EPERM:
            status = tape_status::kWriteProtected;
            break;
        case EBUSY:
        case ENXIO:
        case ENOENT:
            status = tape_status::kNotReady;
            break;
        case ENOSPC:
            return tape_status::kFilemark;
        case EIO:
            status = tape_status::kMediumError;
            break;
        default:
            break;
    }
    sense_.key = 3;
    sense_.asc = status >> 8;
    sense_.ascq = status & 0xFF;
    return status;
}

int DriverScsi::open_node(const std::string& node, int extra_flags) {
    const int file = calls_.open(node, O_RDWR | extra_flags);
    const bool read_only = file == -EROFS || file == -EACCES || file == -EPERM;
    return read_only ? calls_.open(node, O_RDONLY | extra_flags) : file;
}

int DriverScsi::TestUnitReady(int device) {
    if (file_ >= 0) return answer(0);
    const std::string& node = drives_[static_cast<std::size_t>(device)].node;
    // Asked without waiting first: a drive that is still loading would hold the open up.
    const int probe = open_node(node, O_NONBLOCK);
    if (probe < 0) return answer(-probe);
    TapeCalls::Status status;
    const int asked = calls_.status(probe, status);
    calls_.close(probe);
    if (asked < 0) return answer(-asked);
    if (status.no_tape) return answer(ENOMEDIUM);
    if (!status.online) return answer(EBUSY);

    file_ = open_node(node, 0);
    if (file_ < 0) {
        const int error = -file_;
        file_ = -1;
        return answer(error);
    }
    // Block size 0: variable blocks. Refused by the driver only where that is the only mode.
    (void)calls_.operate(file_, MTSETBLK, 0);
    block_number_ = ask_block_number();
    return answer(0);
}

int DriverScsi::ask_block_number() {
    TapeCalls::Status status;
    return calls_.status(file_, status) == 0 ? status.block_number : -1;
}

int DriverScsi::operate(int operation, int count) {
    if (file_ < 0) return answer(ENXIO);
    return answer(-calls_.operate(file_, operation, count));
}

int DriverScsi::Load(int) {
    const int status = operate(MTLOAD, 1);
    if (status == tape_status::kGood) return status;
    // Some drives refuse to load what is loaded.
    TapeCalls::Status now;
    return file_ >= 0 && calls_.status(file_, now) == 0 && now.online ? answer(0) : status;
}

// One block into `buffer`. Gives its length, which is beyond the buffer's when it was cut; 0 at a
// filemark; -errno. How long it is and how much the driver takes in one read is found by trying,
// and kept for the blocks that follow.
ssize_t DriverScsi::read_block(std::span<std::byte> buffer) {
    std::size_t too_short = 0;
    std::size_t length = std::min(buffer.size(), first_read_);
    for (;;) {
        const bool fits = length <= buffer.size();
        if (!fits) spare_.resize(std::max(spare_.size(), length));
        const ssize_t count =
            calls_.read(file_, fits ? buffer.first(length) : std::span(spare_).first(length));
        if (count == -EOVERFLOW || count == -EBUSY) {
            refused_read_ = length;
        } else if (count == -ENOMEM) {
            // The block is longer and the tape has passed it: back, and again with more room.
            if (const int back = calls_.operate(file_, MTBSR, 1); back < 0) return back;
            too_short = length;
        } else {
            if (length > first_read_ || first_read_ >= refused_read_) first_read_ = length;
            if (count > 0 && !fits) std::memcpy(buffer.data(), spare_.data(), buffer.size());
            return count;
        }
        const std::size_t between = too_short + (refused_read_ - too_short) / 2;
        length = std::min(std::max(4 * too_short, kSmallestRead), between);
        if (length < too_short + kFinestStep && too_short > 0) return -EIO;
        if (length == 0) return count;
    }
}

int DriverScsi::ReadVariableBlock(int, std::span<std::byte> buffer, int) {
    if (file_ < 0) return answer(ENXIO);
    const ssize_t count = read_block(buffer);
    if (count == 0) {
        block_number_ = 0;
        return tape_status::kFilemark;
    }
    if (count < 0) {
        TapeCalls::Status now;
        if (count == -EIO && calls_.status(file_, now) == 0) {
            if (now.end_of_data) {
                sense_ = {};
                return tape_status::kEndOfData;
            }
            // Back over a bad block that was passed: a retry must not take the next one for it.
            const bool passed = block_number_ >= 0 && now.block_number == block_number_ + 1;
            if (passed && calls_.operate(file_, MTBSR, 1) < 0) block_number_ = -1;
        }
        return answer(static_cast<int>(-count));
    }
    if (block_number_ >= 0) ++block_number_;
    sense_ = {.residual = static_cast<std::int32_t>(static_cast<ssize_t>(buffer.size()) - count)};
    sense_.wrong_length = sense_.residual != 0;
    return sense_.wrong_length ? tape_status::kShortBlock : tape_status::kGood;
}

int DriverScsi::WriteVariableBlock(int, std::span<const std::byte> block) {
    if (file_ < 0) return answer(ENXIO);
    const ssize_t count = calls_.write(file_, block);
    if (count < 0) return answer(static_cast<int>(-count));
    return answer(static_cast<std::size_t>(count) == block.size() ? 0 : EIO);
}

int DriverScsi::WriteFilemarks(int, int count) { return operate(MTWEOF, count); }

int DriverScsi::Rewind(int) {
    const int status = operate(MTREW, 1);
    block_number_ = status == tape_status::kGood ? 0 : -1;
    return status;
}

int DriverScsi::Unload(int, int) {
    const int status = operate(MTOFFL, 1);
    shut();
    return status;
}

int DriverScsi::Space(int, SpaceUnit unit, int count) {
    if (count == 0) return answer(0);
    const int status = operate(unit == SpaceUnit::kFilemarks ? MTFSF : MTFSR, count);
    block_number_ = ask_block_number();
    // The driver says only that something stopped it; after a filemark it is at block 0.
    const bool at_filemark =
        unit == SpaceUnit::kBlocks && status == tape_status::kMediumError && block_number_ == 0;
    return at_filemark ? tape_status::kFilemark : status;
}

int DriverScsi::RequestSense(int, MutableBytes<SenseData::kSize> sense) {
    const std::array<std::byte, SenseData::kSize> bytes = sense_.bytes();
    std::copy(bytes.begin(), bytes.end(), sense.begin());
    return tape_status::kGood;
}

}  // namespace halvern
