#include <algorithm>
#include <fstream>

#include "platform/block_reader.h"
#include "segy/segy_layout.h"
#include "segy/segy_source.h"

namespace halvern {

namespace {

class SegyDiskSource final : public SegySource {
public:
    SegyDiskSource(std::string path, BlockReader file)
        : path_(std::move(path)), file_(std::move(file)) {}

    bool read_line_header(std::span<std::byte, kLineHeaderBytes> header) override {
        const std::span<const std::byte> bytes = file_.next(header.size());
        std::ranges::copy(bytes, header.begin());
        next_ = kLineHeaderBytes;
        return bytes.size() == header.size();
    }

    bool skip_text_headers(int count) override {
        next_ += SegyLayout::kTextHeaderBlock * count;
        return next_ <= file_.size();
    }

    std::span<const std::byte> next_record(std::int64_t record_bytes,
                                           std::int64_t wanted) override {
        if (file_.position() != next_) file_.seek(next_);
        next_ += record_bytes;
        return file_.next(static_cast<std::size_t>(wanted));
    }

    Fault fault() const override { return file_.fault(); }
    SegyRefusal refusal() override {
        SegyRefusal found = refuse_segy(file_);
        file_.seek(0);
        return found;
    }
    std::int64_t size() const override { return file_.size(); }

    bool seek(std::int64_t offset) override {
        next_ = offset;
        if (!stale_) return true;
        // Back before bytes that were written over: the block in memory may be from before.
        Result<BlockReader> again = BlockReader::open(path_);
        if (!again) return false;
        file_ = std::move(*again);
        stale_ = false;
        return true;
    }

    int overwrite(std::int64_t offset, std::span<const std::byte> bytes) override {
        if (!writer_.is_open()) {
            writer_.open(path_, std::ios::in | std::ios::out | std::ios::binary);
        }
        stale_ = true;
        writer_.seekp(offset);
        const void* const first = bytes.data();
        writer_.write(static_cast<const char*>(first), static_cast<std::streamsize>(bytes.size()));
        writer_.flush();
        return writer_ ? 0 : -1;
    }

private:
    std::string path_;
    BlockReader file_;
    std::fstream writer_;    // opened by the first overwrite
    std::int64_t next_ = 0;  // offset of the next record
    bool stale_ = false;     // whether something was written since the file was opened to read
};

}  // namespace

Result<std::unique_ptr<SegySource>> open_segy_file(const std::string& path) {
    Result<BlockReader> file = BlockReader::open(path);
    if (!file) return file.fault();
    return std::unique_ptr<SegySource>(std::make_unique<SegyDiskSource>(path, std::move(*file)));
}

}  // namespace halvern
