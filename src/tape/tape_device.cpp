#include "tape/tape_device.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>
#include <utility>

namespace halvern {

namespace {

constexpr int kReadyTimeoutMs = 10000;
constexpr int kReadyPollMs = 200;

TapeClock* current_clock = nullptr;

class MachineClock final : public TapeClock {
public:
    long long NowMs() override {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
    }
    void SleepMs(int ms) override { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }
};

}  // namespace

TapeClock& CurrentTapeClock() {
    static MachineClock machine;
    return current_clock ? *current_clock : machine;
}
void SetTapeClock(TapeClock* clock) { current_clock = clock; }

std::string tape_device_name(SequentialScsi& scsi, int device) {
    const std::uint32_t path = scsi.GetScsiPath(device);
    return scsi.GetVendorId(device).value_or("????????") + " " +
           scsi.GetProductId(device).value_or("????????????????") + " - " +
           std::to_string(path >> 8 & 0xFF) + "_" + std::to_string(path >> 16 & 0xFF);
}

TapeDevice::TapeDevice(std::string name, ScsiLoader load, const Reporter& report, int retries,
                       TapeClock& clock)
    : name_(std::move(name)),
      load_(std::move(load)),
      report_(report),
      retries_(retries),
      clock_(clock),
      retries_left_(retries) {}

TapeDevice::~TapeDevice() { (void)close(); }

void TapeDevice::report(const char* text, int status) {
    failed_status_ = status;
    report_.Log("%s.  Error Code = '%d' '%x'\n", text, status, static_cast<unsigned>(status));
    if (status == tape_status::kNoTape) report_.Log("Tape Error:  No tape in drive.\n");
}

int TapeDevice::open() {
    if (is_open()) return 0;
    scsi_ = load_(report_);
    if (!scsi_) return -1;
    device_ = find_device();
    if (device_ < 0) {
        report_.Log(
            "Cannot Open Device '%s'.  Try reselecting the tape device in the flow and "
            "saving the flow item.\n",
            name_.c_str());
    }
    if (device_ < 0 || wait_until_ready() != 0) {
        scsi_.reset();
        return -1;
    }
    retries_left_ = retries_;
    return 0;
}

int TapeDevice::find_device() {
    // A library that never says "no device" must not hold the job up.
    constexpr int kMostDevices = 1024;
    for (int device = 0; device < kMostDevices; ++device) {
        const int type = scsi_->GetDeviceType(device);
        if (type == kNoDevice) return -1;
        if (type != kSequentialDevice) continue;
        const std::string system_name = scsi_->GetSystemName(device);
        const bool by_system_name = !system_name.empty() && name_ == system_name;
        if (by_system_name || name_ == tape_device_name(*scsi_, device)) return device;
    }
    return -1;
}

int TapeDevice::wait_until_ready() {
    const long long start = clock_.NowMs();
    int status = scsi_->TestUnitReady(device_);
    while (status != tape_status::kGood && clock_.NowMs() - start < kReadyTimeoutMs) {
        clock_.SleepMs(kReadyPollMs);
        status = scsi_->TestUnitReady(device_);
    }
    if (status != tape_status::kGood) {
        report("Error Loading Tape.  Unit Not Ready.", status);
        return -1;
    }
    status = scsi_->Load(device_);
    if (status != tape_status::kGood) status = scsi_->Load(device_);
    // A drive that is ready can be used even when it refuses to load a second time.
    if (status != tape_status::kGood) report("Error Loading Tape.", status);
    return 0;
}

int TapeDevice::read(std::span<std::byte> buffer) {
    if (open() != 0) {
        report_.Log("Tape Read Attempted with non-opened tape device\n");
        return kFailed;
    }
    const int length = static_cast<int>(std::min<std::size_t>(buffer.size(), kLongestBlock));
    for (;;) {
        const int status =
            scsi_->ReadVariableBlock(device_, buffer.first(static_cast<std::size_t>(length)), 0);
        switch (status) {
            case tape_status::kFilemark:
            case tape_status::kEndOfFile:
            case tape_status::kEndOfData:
                return kNoData;
            case tape_status::kGood:
            case tape_status::kShortBlock: {
                std::array<std::byte, SenseData::kSize> sense{};
                const int sensed = scsi_->RequestSense(device_, sense);
                if (sensed != tape_status::kGood && status == tape_status::kShortBlock) {
                    // Nobody knows how much of the buffer is the block's, and the tape has passed
                    // it: another attempt would give the next block for this one.
                    report("Error Reading Tape.", sensed);
                    return kFailed;
                }
                const std::int64_t residual =
                    sensed == tape_status::kGood ? SenseData::parse(sense).residual : 0;
                const std::int64_t count = std::clamp<std::int64_t>(length - residual, 0, length);
                if (count > 0) {
                    retries_left_ = retries_;
                    return static_cast<int>(count);
                }
                break;
            }
            default:
                report("Error Reading Tape.", status);
                break;
        }
        if (retries_left_ > 0) {
            --retries_left_;
            continue;
        }
        if (status == tape_status::kGood || status == tape_status::kShortBlock) return kNoData;
        report("Error Reading Tape.", status);
        return kFailed;
    }
}

std::string TapeDevice::fault() const {
    const std::string words = scsi_ ? scsi_->GetFault(device_) : "";
    return words.empty() ? "the drive answers " + std::to_string(failed_status_) : words;
}

int TapeDevice::read_block() {
    // Not filled with zeros: only the pages that blocks really reach are ever used.
    if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::byte[]>(kLongestBlock);
    const int count = read({buffer_.get(), kLongestBlock});
    block_ = {buffer_.get(), static_cast<std::size_t>(std::max(count, 0))};
    return count;
}

int TapeDevice::write(std::span<const std::byte> block) {
    if (open() != 0) {
        report_.Log("Tape Write Attempted with non-opened tape device\n");
        return kFailed;
    }
    const int status = scsi_->WriteVariableBlock(device_, block);
    if (status == tape_status::kGood) return 0;
    if (status == tape_status::kFilemark) return kNoData;
    report("Error Writing Tape.", status);
    return kFailed;
}

int TapeDevice::write_filemark() {
    if (!is_open()) return -1;
    const int status = scsi_->WriteFilemarks(device_, 1);
    if (status == tape_status::kGood) return 0;
    report("Error Writing Filemark.", status);
    return -1;
}

int TapeDevice::skip_files(int count) {
    if (!is_open()) return -1;
    const int status = scsi_->Space(device_, SequentialScsi::SpaceUnit::kFilemarks, count);
    if (status == tape_status::kGood) return 0;
    report("Error Spacing Tape.", status);
    return -1;
}

int TapeDevice::skip_blocks(int count) {
    if (!is_open()) return kFailed;
    const int status = scsi_->Space(device_, SequentialScsi::SpaceUnit::kBlocks, count);
    if (status == tape_status::kGood) return 0;
    if (status == tape_status::kFilemark) return kNoData;
    report("Error Spacing Tape.", status);
    return kFailed;
}

int TapeDevice::rewind() {
    if (!is_open()) return -1;
    const int status = scsi_->Rewind(device_);
    if (status == tape_status::kGood) return 0;
    report("Error Rewinding Tape.", status);
    return -1;
}

int TapeDevice::unload() {
    if (!is_open()) return -1;
    const int rewound = rewind();
    const int status = scsi_->Unload(device_, 0);
    if (status != tape_status::kGood) {
        report("Error Unloading Tape.", status);
        (void)close();
        return -1;
    }
    scsi_.reset();  // nothing is left in the drive that could be rewound
    return rewound;
}

int TapeDevice::close() {
    if (!is_open()) return 0;
    const int rewound = rewind();
    scsi_.reset();
    return rewound;
}

}  // namespace halvern
