#include "foundation/system_paths.h"

#include <algorithm>
#include <filesystem>

namespace halvern {

namespace fs = std::filesystem;

const char kPathSeparator = static_cast<char>(fs::path::preferred_separator);

namespace {

std::string& system_directory() {
    static std::string root;
    return root;
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool same_but_case(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, lower, lower);
}

// The name of the entry of `directory` that `name` means.
std::string existing_name(const std::string& directory, const std::string& name) {
    std::error_code error;
    const fs::path folder = directory.empty() ? fs::path(".") : fs::path(directory);
    if (fs::exists(fs::symlink_status(folder / name, error))) return name;
    std::string found;  // the first in order, should there be several
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator{}; entry.increment(error)) {
        std::string candidate = entry->path().filename().string();
        if (!same_but_case(candidate, name)) continue;
        if (found.empty() || candidate < found) found = std::move(candidate);
    }
    return found.empty() ? name : found;
}

bool ends_with_separator(const std::string& path) {
    return path.ends_with('/') || path.ends_with(kPathSeparator);
}

}  // namespace

const std::string& SystemDirectory() { return system_directory(); }
void SetSystemDirectory(std::string root) { system_directory() = std::move(root); }

std::string SystemDirectoryOf(const std::string& program) {
    return fs::path(program).parent_path().parent_path().string();
}

std::string TreePath(std::string_view directory, std::string_view name) {
    std::string path(directory);
    while (!name.empty()) {
        const std::size_t end = std::min(name.find('/'), name.size());
        const std::string level(name.substr(0, end));
        name.remove_prefix(std::min(end + 1, name.size()));
        if (level.empty()) continue;
        const std::string existing = existing_name(path, level);
        if (!path.empty() && !ends_with_separator(path)) path += kPathSeparator;
        path += existing;
    }
    return path;
}

std::string DefaultHeaderPath() { return TreePath(SystemDirectory(), "header/default"); }

}  // namespace halvern
