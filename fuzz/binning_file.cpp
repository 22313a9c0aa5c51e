// Binning files: what can be read is written again byte for byte, but for the version.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

#include "foundation/messages.h"
#include "geometry/binning_file.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

namespace {

namespace fs = std::filesystem;

/// A folder for the two files, removed at the end.
struct Folder {
    Folder() { fs::create_directories(path); }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    fs::path path =
        fs::temp_directory_path() / ("halvern-fuzz-" + std::to_string(std::random_device{}()));
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Folder folder;
    halvern::LogDestination::UseStandardOutput();
    const std::string read = (folder.path / "read").string();
    const std::string written = (folder.path / "written").string();
    std::string bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(read, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
    halvern::BinningFile file;
    if (halvern::read_binning_file(read, file) != 0) return 0;
    if (halvern::write_binning_file(written, file) != 0) std::abort();
    bytes[11] = '3';
    std::ifstream again(written, std::ios::binary);
    if (std::string(std::istreambuf_iterator<char>(again), {}) != bytes) std::abort();
    return 0;
}
