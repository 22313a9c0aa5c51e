#include "foundation/prospect.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <sstream>
#include <utility>

#include "foundation/global_config.h"
#include "foundation/key_readers.h"
#include "foundation/messages.h"
#include "foundation/system_paths.h"
#include "platform/replace_file.h"
#include "platform/text_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

// The lines of a file that should be small.
std::optional<std::istringstream> open_small_file(const std::string& path) {
    constexpr std::int64_t kMost = 1 << 20;
    Result<std::string> text = read_text_file(path, kMost);
    if (!text) return {};
    return std::istringstream(std::move(*text));
}

}  // namespace

const std::vector<std::string_view>& ProspectSubdirectories() {
    static const std::vector<std::string_view> names = {
        "bin",  "data",  "flow",    "geo",           "gif",          "nav",
        "segy", "decon", "spectra", "spectra/phase", "spectra/power"};
    return names;
}

bool Prospect::is_name(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\\:\0", 4)) == std::string_view::npos;
}

std::string Prospect::file_path(std::string_view name) {
    return TreePath(SystemDirectory(), "Prospects/" + std::string(name));
}

int Prospect::open(const std::string& name) {
    const std::string path = file_path(name);
    std::optional<std::istringstream> file;
    if (is_name(name)) file = open_small_file(path);
    if (!file) {
        LogPrint("Cannot open prospect file '%s' to read.\n", path.c_str());
        return -1;
    }
    LogPrint("Loading Prospect        = %s\n", name.c_str());
    std::vector<std::string> directories;
    std::string directory;
    for (std::string line; std::getline(*file, line);) {
        if (ReadKey(line.c_str(), "DATADIR=", directory)) directories.push_back(directory);
    }
    assign(name, std::move(directories));
    return 0;
}

void Prospect::assign(std::string name, std::vector<std::string> data_directories) {
    name_ = std::move(name);
    data_directories_ = std::move(data_directories);
}

int Prospect::save() const {
    std::string text;
    for (const std::string& directory : data_directories_) text += "DATADIR=" + directory + "\n";
    const std::string path = file_path(name_);
    if (!is_name(name_) || replace_file(path, text)) {
        LogPrint("Cannot open prospect file '%s' to write\n", path.c_str());
        return -1;
    }
    return 0;
}

void Prospect::create_directories() const {
    std::error_code ignored;
    for (const std::string& directory : data_directories_) {
        const std::string own = TreePath(directory, name_);
        fs::create_directory(own, ignored);  // a disk that is not mounted is not made up
        for (const std::string_view name : ProspectSubdirectories()) {
            fs::create_directory(TreePath(own, name), ignored);
        }
    }
}

const std::string& Prospect::data_directory() const {
    if (!data_directories_.empty()) return data_directories_.front();
    static const std::string none;
    const std::vector<std::string>& configured = CurrentConfig().data_directories();
    return configured.empty() ? none : configured.front();
}

std::string Prospect::path(std::string_view subdirectory, std::string_view name) const {
    std::string levels = name_ + "/";
    levels += subdirectory;
    if (!name.empty()) {
        levels += "/";
        levels += name;
    }
    return TreePath(data_directory(), levels);
}

Prospect& CurrentProspect() {
    static Prospect prospect;
    return prospect;
}

std::string LastProspect() {
    std::optional<std::istringstream> file =
        open_small_file(TreePath(SystemDirectory(), "Halvern.defaults"));
    std::string path;
    for (std::string line; file && std::getline(*file, line);) {
        (void)ReadKey(line.c_str(), "PROSPECT=", path);
    }
    const std::size_t cut = path.find_last_of("/\\");
    const std::string name = cut == std::string::npos ? path : path.substr(cut + 1);
    return Prospect::is_name(name) ? name : "default";
}

int RememberProspect(const std::string& name) {
    const std::string path = TreePath(SystemDirectory(), "Halvern.defaults");
    const Fault fault = replace_file(path, "PROSPECT=" + Prospect::file_path(name) + "\n");
    if (!fault) return 0;
    LogPrint("Cannot write file '%s': %s.\n", path.c_str(), fault.reason().c_str());
    return -1;
}

}  // namespace halvern
