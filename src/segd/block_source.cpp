#include "segd/block_source.h"

#include <algorithm>
#include <utility>

#include "tape/tape_device.h"

namespace halvern::segd {

BlockSource::Status TapeBlockSource::next(std::span<const std::byte>& block) {
    block = {};
    if (stuck_ || std::exchange(behind_filemark_, false)) return Status::kNoData;
    switch (device_.read_block()) {
        case TapeDevice::kNoData:
            return Status::kNoData;
        case TapeDevice::kFailed:
            // Some drives have passed the bad block already, which may have been the file's last.
            switch (device_.skip_blocks(1)) {
                case TapeDevice::kNoData:
                    behind_filemark_ = true;
                    break;
                case TapeDevice::kFailed:
                    stuck_ = true;
                    break;
                default:
                    break;
            }
            return Status::kReadError;
        default:
            block = device_.block();
            return Status::kBlock;
    }
}

int TapeBlockSource::skip_file() {
    stuck_ = false;
    if (std::exchange(behind_filemark_, false)) return 0;
    return device_.skip_files(1);
}

std::optional<FileBlockSource> FileBlockSource::open(const std::string& path) {
    Result<BlockReader> file = BlockReader::open(path);
    if (!file) return {};
    return FileBlockSource(std::move(*file));
}

BlockSource::Status FileBlockSource::next(std::span<const std::byte>& block) {
    constexpr std::int64_t kPiece = 256 * 1024;
    const std::int64_t left = std::min(kPiece, file_.size() - file_.position());
    block = left > 0 ? file_.next(static_cast<std::size_t>(left)) : std::span<const std::byte>{};
    if (static_cast<std::int64_t>(block.size()) < left) {
        file_.seek(file_.size());  // cannot be read: nothing behind it can
        return Status::kReadError;
    }
    return block.empty() ? Status::kNoData : Status::kBlock;
}

int FileBlockSource::skip_file() {
    file_.seek(file_.size());
    return 0;
}

}  // namespace halvern::segd
