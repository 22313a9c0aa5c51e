#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/messages.h"
#include "tape/image_scsi.h"
#include "tape/image_tools.h"
#include "tape/tape_device.h"

// A tape image of any bytes: read block by block, listed, checked and taken apart.
void halvern::TerminateJob(int) {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace halvern;
    namespace fs = std::filesystem;
    static const fs::path folder = [] {
        const fs::path made = fs::temp_directory_path() /
                              ("halvern-fuzz-tape-" +
                               std::to_string(std::hash<std::string>{}(
                                   std::to_string(std::rand()) + fs::current_path().string())));
        fs::create_directories(made);
        return made;
    }();
    const std::string image = (folder / "image.tap").string();
    if (std::FILE* file = std::fopen(image.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    const SilentReporter quiet;
    TapeDevice device(
        image,
        [&](const Reporter& to) { return std::make_unique<ImageScsi>(image, TapeUse::kRead, to); },
        quiet, 1);
    std::size_t bytes = 0;
    for (int ends = 0; ends < 2;) {
        static std::vector<std::byte> block(1 << 16);
        const int count = device.read(block);
        if (count > 0) bytes += static_cast<std::size_t>(count);
        if (count == TapeDevice::kNoData) ++ends;
        if (count == TapeDevice::kFailed && device.skip_blocks(1) != 0) break;
    }
    ImageReport report;
    std::int64_t listed = 0;
    if (!check_image(image, report).empty() ||
        list_image(image, [&](const ImageRun& run) { listed += run.count * run.length; }).empty() !=
            report.fault.empty() ||
        listed != report.block_bytes || static_cast<std::int64_t>(bytes) > report.block_bytes) {
        __builtin_trap();
    }
    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    (void)extract_image(image, folder.string(), "out", ".bin", made, bad_blocks);
    for (const std::string& path : made) fs::remove(path);
    return 0;
}
