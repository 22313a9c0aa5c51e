// The configuration and the prospect file, and with them the key readers: any bytes are a file.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "foundation/global_config.h"
#include "foundation/key_readers.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"

namespace {

namespace fs = std::filesystem;

// A system directory that holds the two files, removed at the end.
struct Root {
    Root() {
        fs::create_directories(path / "Prospects");
        halvern::SetSystemDirectory(path.string());
        stderr = std::fopen("/dev/null", "w");  // message boxes; the sanitizers write by themselves
    }
    ~Root() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    fs::path path =
        fs::temp_directory_path() / ("halvern-fuzz-" + std::to_string(std::random_device{}()));
};

void write(const fs::path& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<long>(bytes.size()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Root root;
    const std::string bytes(reinterpret_cast<const char*>(data), size);

    write(root.path / "halvern.cfg", bytes);
    halvern::GlobalConfig config;
    if (config.read((root.path / "halvern.cfg").string()) != 0) __builtin_trap();
    if (config.data_directories().empty() || config.data_directories().size() > 64 ||
        config.tape_devices().size() > 64 || config.font_face().size() > 80) {
        __builtin_trap();
    }

    write(root.path / "Prospects" / "p", bytes);
    halvern::Prospect prospect;
    if (prospect.open("p") != 0) __builtin_trap();
    write(root.path / "Halvern.defaults", bytes);
    if (!halvern::Prospect::is_name(halvern::LastProspect())) __builtin_trap();

    float real = 0;
    if (halvern::ReadKey(bytes.c_str(), "", real) != 1 || real - real != 0) __builtin_trap();
    return 0;
}
