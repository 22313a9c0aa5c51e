#include "support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>

namespace halvern::testing_support {

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::random_device seed;
    do {
        path_ = fs::temp_directory_path() / ("halvern-test-" + std::to_string(seed()));
    } while (!fs::create_directory(path_));
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string TemporaryFolder::write(std::string_view name, std::string_view bytes) const {
    const fs::path path = path_ / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return path.string();
}

std::string file_bytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << "cannot read " << path;
    std::ostringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

std::optional<std::string> field_data(std::string_view name) {
    const char* folder = std::getenv("HALVERN_DATA");
    const fs::path path =
        (folder ? fs::path(folder)
                : fs::path(HALVERN_SOURCE_DIR).parent_path() / "shared" / "data") /
        name;
    if (fs::exists(path)) return path.string();
    std::cout << "field data " << name << " is not here: skipped\n";
    return std::nullopt;
}

}  // namespace halvern::testing_support
