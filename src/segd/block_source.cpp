#include "segd/block_source.h"

#include <algorithm>
#include <utility>

#include "tape/tape_device.h"

namespace halvern::segd {

BlockSource::Status TapeBlockSource::next(std::span<const std::byte>& block) {
    block = {};
    if (!trouble_.empty() || std::exchange(after_filemark_, false)) return Status::kNoData;
    switch (device_.read_block()) {
        case TapeDevice::kNoData:
            return Status::kNoData;
        case TapeDevice::kFailed: {
            const std::string fault = device_.fault();
            // Some drives have passed the bad block already, which may have been the file's last.
            const int passed = device_.skip_blocks(1);
            after_filemark_ = passed == TapeDevice::kNoData;
            if (passed == TapeDevice::kFailed) trouble_ = fault;
            return Status::kReadError;
        }
        default:
            block = device_.block();
            return Status::kBlock;
    }
}

int TapeBlockSource::skip_file() {
    if (std::exchange(after_filemark_, false)) return 0;
    if (device_.skip_files(1) != 0) return -1;
    trouble_.clear();
    return 0;
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
        file_.seek(file_.size());
        return Status::kReadError;
    }
    return block.empty() ? Status::kNoData : Status::kBlock;
}

int FileBlockSource::skip_file() {
    file_.seek(file_.size());
    return file_.fault() ? -1 : 0;
}

std::string FileBlockSource::trouble() const { return file_.fault().reason(); }

BlockSource::Status RepeatingSource::next(std::span<const std::byte>& block) {
    if (next_ < heard_.size()) {
        const Heard& heard = heard_[next_++];
        block = heard.block;
        return heard.status;
    }
    const Status status = source_.next(block);
    if (!remembering_) {
        heard_.clear();
        next_ = 0;
        return status;
    }
    heard_.push_back({status, {block.begin(), block.end()}});
    ++next_;
    bytes_ += static_cast<std::int64_t>(block.size());
    return status;
}

int RepeatingSource::skip_file() {
    while (next_ < heard_.size()) {
        if (heard_[next_++].status == Status::kNoData) return 0;
    }
    return source_.skip_file();
}

std::string RepeatingSource::trouble() const {
    return next_ < heard_.size() ? std::string() : source_.trouble();
}

}  // namespace halvern::segd
