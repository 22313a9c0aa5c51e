#include "tape/image_scsi.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

#include "tape/tape_prompt.h"

namespace halvern {

namespace fs = std::filesystem;

ImageScsi::ImageScsi(std::string path, TapeUse use, const Reporter& report)
    : path_(std::move(path)), use_(use), report_(report) {}

int ImageScsi::GetDeviceType(int device) {
    if (device != 0) return kNoDevice;
    std::error_code ignored;
    const fs::file_status status = fs::status(path_, ignored);
    const bool usable = fs::is_regular_file(status) ||
                        (use_ == TapeUse::kWrite && status.type() == fs::file_type::not_found);
    return usable ? kSequentialDevice : kNoDevice;
}

int ImageScsi::TestUnitReady(int) {
    if (use_ == TapeUse::kWrite || reader_) return tape_status::kGood;
    return prepare_reading();
}

int ImageScsi::answer(int status) {
    sense_ = {};
    switch (status) {
        case tape_status::kGood:
            break;
        case tape_status::kFilemark:
            sense_.filemark = true;
            break;
        case tape_status::kEndOfFile:
        case tape_status::kEndOfData:
            sense_.key = 8;
            break;  // blank check
        case tape_status::kWriteProtected:
            sense_.key = 7;
            break;  // data protect
        default:
            sense_.key = 3;
            break;  // medium error
    }
    if (sense_.key == 3 || sense_.key == 7) {
        sense_.asc = status >> 8;
        sense_.ascq = status & 0xFF;
    }
    return status;
}

int ImageScsi::answer_fault() {
    const std::int64_t offset = reader_->position();
    fault_ = reader_->fault();
    if (std::exchange(reported_fault_, offset) != offset) {
        report_.Log("Tape image '%s' is damaged: %s.\n", path_.c_str(), fault_.c_str());
    }
    return answer(tape_status::kBadFormat);
}

int ImageScsi::prepare_reading() {
    if (reader_) return tape_status::kGood;
    if (const int status = finish_writing(); status != tape_status::kGood) return answer(status);
    reader_ = TapeImageReader::open(path_);
    if (!reader_) return answer(tape_status::kNotReady);
    reader_->seek(position_);
    return tape_status::kGood;
}

int ImageScsi::prepare_writing() {
    if (writer_) return tape_status::kGood;
    if (use_ == TapeUse::kRead) return tape_status::kWriteProtected;
    if (reader_) {
        position_ = reader_->position();
        reader_.reset();
    }
    std::error_code missing;
    const std::uintmax_t size = fs::file_size(path_, missing);
    if (!missing && size > static_cast<std::uintmax_t>(position_)) {
        const bool agreed = ask_operator(
            {.text = "The tape image '" + path_ +
                     "' holds data.  To write over it, click OK.  Otherwise, click Cancel."});
        if (!agreed) {
            report_.Log("Tape image '%s' holds data and is not written over.\n", path_.c_str());
            return tape_status::kWriteProtected;
        }
    }
    Result<TapeImageWriter> writer = TapeImageWriter::open(path_, position_);
    if (writer) writer_ = std::move(*writer);
    return writer ? tape_status::kGood : tape_status::kWriteError;
}

int ImageScsi::finish_writing() {
    if (!writer_) return tape_status::kGood;
    const Fault fault = writer_->finish();
    position_ = writer_->position();
    writer_.reset();
    return !fault ? tape_status::kGood : tape_status::kWriteError;
}

int ImageScsi::ReadVariableBlock(int, std::span<std::byte> buffer, int) {
    if (const int status = prepare_reading(); status != tape_status::kGood) return status;
    const TapeImageRecord record = reader_->next();
    switch (record.item) {
        case TapeImageItem::kFilemark:
            return answer(tape_status::kFilemark);
        case TapeImageItem::kEndOfData:
            return answer(tape_status::kEndOfData);
        case TapeImageItem::kFault:
            return answer_fault();
        case TapeImageItem::kBadBlock:
            reader_->seek(record.offset);
            fault_ = "the block at byte " + std::to_string(record.offset) + " is marked as bad";
            return answer(tape_status::kMediumError);
        case TapeImageItem::kBlock:
            break;
    }
    std::memcpy(buffer.data(), record.data.data(), std::min(buffer.size(), record.data.size()));
    answer(tape_status::kGood);
    sense_.residual = static_cast<std::int32_t>(static_cast<std::int64_t>(buffer.size()) -
                                                static_cast<std::int64_t>(record.data.size()));
    sense_.wrong_length = sense_.residual != 0;
    return sense_.wrong_length ? tape_status::kShortBlock : tape_status::kGood;
}

int ImageScsi::WriteVariableBlock(int, std::span<const std::byte> block) {
    if (const int status = prepare_writing(); status != tape_status::kGood) return answer(status);
    return answer(writer_->write_block(block) == 0 ? tape_status::kGood : tape_status::kWriteError);
}

int ImageScsi::WriteFilemarks(int, int count) {
    if (const int status = prepare_writing(); status != tape_status::kGood) return answer(status);
    for (int i = 0; i < count; ++i) {
        if (writer_->write_filemark() != 0) return answer(tape_status::kWriteError);
    }
    return answer(!writer_->flush() ? tape_status::kGood : tape_status::kWriteError);
}

int ImageScsi::Rewind(int) {
    const int status = finish_writing();
    position_ = 0;
    if (reader_) reader_->seek(0);
    return answer(status);
}

int ImageScsi::Unload(int, int) {
    const int status = finish_writing();
    reader_.reset();
    position_ = 0;
    return answer(status);
}

int ImageScsi::Space(int, SpaceUnit unit, int count) {
    if (count < 0) return answer(tape_status::kBadRequest);
    if (const int status = prepare_reading(); status != tape_status::kGood) return status;
    while (count > 0) {
        switch (reader_->next().item) {
            case TapeImageItem::kFault:
                return answer_fault();
            case TapeImageItem::kEndOfData:
                return answer(tape_status::kEndOfData);
            case TapeImageItem::kFilemark:
                if (unit == SpaceUnit::kBlocks) return answer(tape_status::kFilemark);
                --count;
                break;
            case TapeImageItem::kBlock:
            case TapeImageItem::kBadBlock:
                if (unit == SpaceUnit::kBlocks) --count;
                break;
        }
    }
    return answer(tape_status::kGood);
}

int ImageScsi::RequestSense(int, MutableBytes<SenseData::kSize> sense) {
    const std::array<std::byte, SenseData::kSize> bytes = sense_.bytes();
    std::copy(bytes.begin(), bytes.end(), sense.begin());
    return tape_status::kGood;
}

}  // namespace halvern
