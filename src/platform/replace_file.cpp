#include "platform/replace_file.h"

#include <charconv>
#include <filesystem>
#include <span>

#include "platform/block_writer.h"
#include "platform/detached_process.h"
#include "platform/sync_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {
constexpr std::string_view kMark = ".new";  // followed by the number of the process
}

Result<ReplacedFile> ReplacedFile::begin(const std::string& path) {
    std::error_code missing;
    const fs::path resolved = fs::canonical(path, missing);
    std::string target = missing ? path : resolved.string();
    const fs::file_status old = fs::status(target, missing);
    if (fs::is_directory(old)) return Fault("it is a directory");
    if (fs::exists(old) && !fs::is_regular_file(old)) return Fault("it is no regular file");
    std::string beside = target + std::string(kMark) + std::to_string(current_process_id());
    // One of this name that nobody has locked is what an earlier process of the same number left.
    Result<FileLock> lock = FileLock::take(beside, FileLock::Missing::kCreate);
    if (!lock) return lock.fault();
    return ReplacedFile(std::move(target), std::move(beside), std::move(*lock));
}

ReplacedFile::~ReplacedFile() {
    std::error_code ignored;
    if (!beside_.empty()) fs::remove(beside_, ignored);
}

Fault ReplacedFile::commit(Reach reach, FileLock* lock) {
    std::error_code error;
    const fs::file_status old = fs::status(target_, error);
    if (fs::exists(old)) {
        fs::permissions(beside_, old.permissions(), error);
        if (error) return Fault::of_system(error);
    }
    if (reach == Reach::kDisk) {
        if (Fault fault = sync_file(beside_)) return fault;
    }
    if (lock && FileLock::kBarsReplacing) lock->release();
    fs::rename(beside_, target_, error);
    if (error) return Fault::of_system(error);
    if (lock) *lock = std::move(lock_);
    lock_.release();
    beside_.clear();
    return {};
}

Fault replace_file(const std::string& path, std::string_view bytes, Reach reach, FileLock* lock) {
    Result<ReplacedFile> file = ReplacedFile::begin(path);
    if (!file) return file.fault();
    BlockWriter writer;
    if (Fault fault = writer.open(file->beside(), BlockWriter::Mode::kCreate)) return fault;
    static_cast<void>(writer.write(std::as_bytes(std::span(bytes))));
    if (Fault fault = writer.finish()) return fault;
    return file->commit(reach, lock);
}

std::optional<std::int64_t> unfinished_file_owner(std::string_view name) {
    const std::size_t mark = name.rfind(kMark);
    if (mark == std::string_view::npos || mark == 0) return {};
    const std::string_view number = name.substr(mark + kMark.size());
    std::int64_t owner = 0;
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), owner);
    if (error != std::errc() || end != number.data() + number.size() || owner <= 0) return {};
    return owner;
}

}  // namespace halvern
