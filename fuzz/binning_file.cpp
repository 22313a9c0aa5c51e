// Binning files: what can be read is written again byte for byte, but for the version.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "foundation/messages.h"
#include "geometry/binning_file.h"
#include "scratch_folder.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    const halvern::SilentReporter report;
    const std::string read = folder.file("read");
    const std::string written = folder.file("written");
    std::string bytes(reinterpret_cast<const char*>(data), size);
    std::ofstream(read, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
    halvern::BinningFile file;
    if (halvern::read_binning_file(read, file, report) != 0) return 0;
    if (halvern::write_binning_file(written, file, report) != 0) std::abort();
    bytes[11] = '3';
    std::ifstream again(written, std::ios::binary);
    if (std::string(std::istreambuf_iterator<char>(again), {}) != bytes) std::abort();
    return 0;
}
