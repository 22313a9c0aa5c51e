#pragma once

#include <filesystem>
#include <random>
#include <string>
#include <system_error>

/// A folder for what a fuzz target has to bring to the disk, removed at the end.
class ScratchFolder {
public:
    ScratchFolder() { std::filesystem::create_directories(path_); }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    std::string file(const char* name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_ = std::filesystem::temp_directory_path() /
                                  ("halvern-fuzz-" + std::to_string(std::random_device{}()));
};
