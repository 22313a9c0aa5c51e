#include "foundation/scratch.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "foundation/global_config.h"
#include "foundation/messages.h"
#include "foundation/system_paths.h"
#include "platform/create_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

// Never destroyed: objects that end with the program still give their files back.
std::vector<std::string>& scratch_files() {
    static auto& names = *new std::vector<std::string>;
    return names;
}

// Whether nothing of that name is left.
bool remove_quietly(const std::string& name) {
    std::error_code error;
    fs::remove(name, error);
    return !error;
}

}  // namespace

std::string MakeScratchName() {
    const std::string& directory = CurrentConfig().scratch_directory();
    // Chance finds a free name at once; the bound only keeps a broken generator from spinning.
    constexpr int kAttempts = 100000;
    std::error_code error;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        const unsigned first = static_cast<unsigned>(std::rand());
        const unsigned number = first * static_cast<unsigned>(std::rand());
        std::string name = directory + kPathSeparator + "SCR" + std::to_string(number);
        error = create_exclusively(name);
        if (!error) {
            scratch_files().push_back(name);
            return name;
        }
        if (error != std::errc::file_exists) break;
    }
    LogPrint("Cannot create a scratch file in directory '%s': %s.\n", directory.c_str(),
             error.message().c_str());
    LogPrint(
        "Check that the directory exists, its permissions and its disk space, or name another "
        "one by SCRATCHDIR= in the configuration file '%s'.\n",
        CurrentConfig().path().c_str());
    return {};
}

void RemoveScratchFile(const std::string& name) {
    std::erase_if(scratch_files(),
                  [&](const std::string& own) { return own == name && remove_quietly(name); });
}

void RemoveScratchFiles() { std::erase_if(scratch_files(), remove_quietly); }

int RemoveDirectoryTree(const std::string& path) {
    std::error_code error;
    std::vector<std::string> directories;
    std::vector<std::string> files;
    if (!fs::is_symlink(path, error)) {
        fs::directory_iterator entry(path, error);
        if (error) return -1;
        for (; !error && entry != fs::directory_iterator{}; entry.increment(error)) {
            std::error_code unknown;
            const bool is_directory = fs::is_directory(entry->symlink_status(unknown));
            (is_directory ? directories : files).push_back(entry->path().filename().string());
        }
    }
    std::ranges::sort(directories);
    std::ranges::sort(files);
    for (const std::string& name : directories) {
        if (name.starts_with('.')) continue;
        const std::string full = path + kPathSeparator + name;
        LogPrint("Removing Dir '%s'\n", full.c_str());
        (void)RemoveDirectoryTree(full);
    }
    for (const std::string& name : files) {
        const std::string full = path + "/" + name;
        LogPrint("Removing File '%s'\n", full.c_str());
        (void)remove_quietly(full);
    }
    (void)remove_quietly(path);
    return fs::exists(fs::symlink_status(path, error)) ? -1 : 0;
}

}  // namespace halvern
