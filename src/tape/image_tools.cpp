#include "tape/image_tools.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "platform/block_reader.h"
#include "platform/block_writer.h"
#include "platform/create_file.h"
#include "platform/replace_file.h"
#include "segy/segy_layout.h"
#include "trace/line_header.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

std::string quoted(const char* before, const std::string& path, const std::string& after) {
    return before + ("'" + path + "' ") + after;
}

std::string damaged(const std::string& image, const TapeImageReader& reader) {
    return quoted("", image, "is damaged: " + reader.fault());
}

bool is_block(TapeImageItem item) {
    return item == TapeImageItem::kBlock || item == TapeImageItem::kBadBlock;
}

/// One disk file being written; removed again when it is not finished.
class ExtractedFile {
public:
    explicit ExtractedFile(std::string path) : path_(std::move(path)) {
        opened_ = !writer_.open(path_, BlockWriter::Mode::kCreate);
    }
    ~ExtractedFile() {
        std::error_code ignored;
        if (!complete_) fs::remove(path_, ignored);
    }
    ExtractedFile(const ExtractedFile&) = delete;
    ExtractedFile& operator=(const ExtractedFile&) = delete;
    bool put(std::span<const std::byte> bytes) {
        return opened_ && writer_.write(bytes) == bytes.size();
    }
    bool finish() { return complete_ = opened_ && !writer_.finish(); }

private:
    const std::string path_;
    BlockWriter writer_;
    bool opened_ = false;
    bool complete_ = false;
};

}  // namespace

std::string list_image(const std::string& image, const std::function<void(const ImageRun&)>& show) {
    std::optional<TapeImageReader> reader = TapeImageReader::open(image);
    if (!reader) return quoted("", image, "cannot be read");
    ImageRun run;
    int file = 1;
    std::int64_t block = 0;  // in this tape file
    for (;;) {
        const TapeImageRecord record = reader->next();
        const int length = static_cast<int>(record.data.size());
        if (is_block(record.item)) ++block;
        if (run.count > 0 && run.item == record.item && run.length == length && run.file == file) {
            ++run.count;
        } else {
            if (run.count > 0) show(run);
            run = {.item = record.item,
                   .offset = record.offset,
                   .file = file,
                   .first_block = is_block(record.item) ? block : 0,
                   .count = 1,
                   .length = length};
        }
        if (record.item == TapeImageItem::kFilemark) {
            ++file;
            block = 0;
        } else if (!is_block(record.item)) {
            show(run);
            return record.item == TapeImageItem::kFault ? damaged(image, *reader) : "";
        }
    }
}

std::string check_image(const std::string& image, ImageReport& report) {
    report = {};
    std::optional<TapeImageReader> reader = TapeImageReader::open(image);
    if (!reader) return quoted("", image, "cannot be read");
    int marks_in_a_row = 0;
    for (bool in_file = false;;) {
        const TapeImageRecord record = reader->next();
        const int length = static_cast<int>(record.data.size());
        switch (record.item) {
            case TapeImageItem::kBlock:
            case TapeImageItem::kBadBlock:
                marks_in_a_row = 0;
                if (!std::exchange(in_file, true)) ++report.files;
                if (record.item == TapeImageItem::kBadBlock) ++report.bad_blocks;
                report.shortest_block =
                    report.blocks == 0 ? length : std::min(report.shortest_block, length);
                report.longest_block = std::max(report.longest_block, length);
                ++report.blocks;
                report.block_bytes += length;
                break;
            case TapeImageItem::kFilemark:
                ++report.filemarks;
                ++marks_in_a_row;
                in_file = false;
                break;
            case TapeImageItem::kFault:
                report.fault = reader->fault();
                return {};
            case TapeImageItem::kEndOfData:
                report.ends_with_two_filemarks = marks_in_a_row >= 2;
                return {};
        }
    }
}

std::string make_image(std::span<const std::string> files, const std::string& image, bool replace,
                       const BlockSplitter& split) {
    std::error_code missing;
    for (const std::string& file : files) {
        if (fs::equivalent(file, image, missing)) {
            return quoted("", image, "cannot be made from itself");
        }
    }
    if (!replace && fs::exists(image, missing)) return quoted("", image, "is there already");
    const auto failed = [&image](const Fault& fault) {
        return quoted("", image, "cannot be written: " + fault.reason());
    };
    Result<ReplacedFile> made = ReplacedFile::begin(image);
    if (!made) return failed(made.fault());
    Result<TapeImageWriter> writer = TapeImageWriter::open(made->beside(), 0);
    if (!writer) return failed(writer.fault());
    const auto write = [&writer](std::span<const std::byte> block) {
        return writer->write_block(block);
    };
    for (const std::string& file : files) {
        if (std::string why = split(file, write); !why.empty()) return why;
        if (writer->write_filemark() != 0) return failed(writer->fault());
    }
    (void)writer->write_filemark();
    if (const Fault fault = writer->finish()) return failed(fault);
    if (const Fault fault = made->commit()) return failed(fault);
    return {};
}

std::string split_segy(const std::string& file,
                       const std::function<int(std::span<const std::byte>)>& block) {
    Result<BlockReader> reader = BlockReader::open(file);
    if (!reader) return quoted("", file, "cannot be read");
    LineHeader line;
    const std::span<const std::byte> head = reader->next(kLineHeaderBytes);
    if (head.size() < kLineHeaderBytes) {
        return quoted("", file, "is shorter than the headers of a SEG-Y file");
    }
    std::copy(head.begin(), head.end(), line.bytes().begin());
    const SegyLayout layout = SegyLayout::parse(line);
    if (const std::string problem = layout.problem(); !problem.empty()) {
        return quoted("", file, problem);
    }
    const std::int64_t record = layout.record_bytes();
    const std::int64_t traces = reader->size() - layout.first_record();
    if (traces < 0 || traces % record != 0) {
        return quoted("", file,
                      "does not hold whole traces of " + std::to_string(record) + " bytes");
    }
    const auto copy = [&](std::int64_t bytes) {
        const auto wanted = static_cast<std::size_t>(bytes);
        const std::span<const std::byte> got = reader->next(wanted);
        return got.size() == wanted && block(got) == 0;
    };
    reader->seek(0);
    bool copied = copy(kTextHeaderBytes) && copy(kBinaryHeaderBytes);
    for (int i = 0; copied && i < layout.text_headers; ++i) copied = copy(kTextHeaderBytes);
    while (copied && reader->position() < reader->size()) copied = copy(record);
    return copied ? std::string{} : quoted("The blocks of ", file, "cannot be put on the image");
}

std::string extract_image(const std::string& image, const std::string& folder,
                          const std::string& stem, const std::string& extension,
                          std::vector<std::string>& made, std::int64_t& bad_blocks) {
    made.clear();
    bad_blocks = 0;
    std::optional<TapeImageReader> reader = TapeImageReader::open(image);
    if (!reader) return quoted("", image, "cannot be read");
    std::optional<ExtractedFile> file;
    std::string path;
    const auto finish = [&] {
        if (!file) return true;
        const bool finished = file->finish();
        file.reset();
        if (finished) made.push_back(path);
        return finished;
    };
    for (;;) {
        const TapeImageRecord record = reader->next();
        if (record.item == TapeImageItem::kFault) {
            return damaged(image, *reader);
        }
        if (!is_block(record.item)) {
            if (!finish()) return quoted("", path, "cannot be written");
            if (record.item == TapeImageItem::kEndOfData) return {};
            continue;
        }
        if (!file) {
            char number[16];
            std::snprintf(number, sizeof number, "%04zu", made.size() + 1);
            path = (fs::path(folder) / (stem + number + extension)).string();
            const std::error_code error = create_exclusively(path);
            if (error == std::errc::file_exists) return quoted("", path, "is there already");
            if (error) return quoted("", path, "cannot be written: " + error.message());
            file.emplace(path);
        }
        if (record.item == TapeImageItem::kBadBlock) ++bad_blocks;
        if (!file->put(record.data)) return quoted("", path, "cannot be written");
    }
}

}  // namespace halvern
