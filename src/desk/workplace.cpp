#include "desk/workplace.h"

#include <algorithm>
#include <cctype>

#include "desk/command_error.h"
#include "foundation/global_config.h"
#include "foundation/installation_tree.h"
#include "foundation/key_readers.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "platform/program_path.h"
#include "platform/replace_file.h"
#include "platform/text_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr const char* kConfiguration = "halvern.cfg";
constexpr const char* kPrograms[] = {"halvern", "halvern2"};

bool holds(const fs::path& directory, std::string_view name) {
    std::error_code ignored;
    return fs::exists(TreePath(directory.string(), name), ignored);
}

// "halvern", or "halvern.exe" where programs end so.
std::string program_file(const fs::path& directory, std::string_view name) {
    std::string file = std::string(name) + ".exe";
    std::error_code ignored;
    return fs::exists(directory / "bin" / file, ignored) ? file : std::string(name);
}

// A link from `link` to `program`, renewed when one is there; a copy where there are no links.
void link_program(const fs::path& program, const fs::path& link) {
    std::error_code error;
    if (fs::equivalent(program, link, error) && !fs::is_symlink(link, error)) return;  // itself
    if (fs::is_symlink(link, error)) fs::remove(link, error);
    if (fs::exists(link, error)) return;  // somebody's own
    fs::create_symlink(program, link, error);
    if (error) fs::copy_file(program, link, error);
    if (error) throw CommandError("cannot make '" + link.string() + "': " + error.message());
}

void make_directory(const fs::path& directory) {
    std::error_code error, ignored;
    fs::create_directories(directory, error);
    if (!fs::is_directory(directory, ignored)) {
        throw CommandError("cannot make the directory '" + directory.string() + "'" +
                           (error ? ": " + error.message() : ""));
    }
}

// What the configuration names as scratch directory and could not be used.
void note_fallback(const std::string& path) {
    const Result<std::string> text = read_text_file(path);
    std::string named;
    for (const std::string& line : split_lines(text ? *text : "")) {
        (void)ReadKey(line.c_str(), "SCRATCHDIR=", named);
    }
    const std::string& used = CurrentConfig().scratch_directory();
    if (named.empty() || named == used) return;
    CurrentWorkplace().notes.push_back("Scratch directory '" + named +
                                       "' does not exist.  Using '" + used + "'.");
}

}  // namespace

Workplace& CurrentWorkplace() {
    static Workplace workplace;
    return workplace;
}

fs::path installation_of(const std::string& argument0) {
    fs::path called = fs::path(program_path(argument0)).parent_path().parent_path();
    if (holds(called, "header/default")) return called;
    const fs::path real = fs::path(reported_program_path()).parent_path().parent_path();
    return holds(real, "header/default") ? real : called;
}

std::optional<fs::path> directory_upwards(const fs::path& from) {
    for (fs::path directory = from;; directory = directory.parent_path()) {
        std::error_code ignored;
        if (fs::is_regular_file(directory / kConfiguration, ignored)) return directory;
        if (directory == directory.parent_path()) return {};
    }
}

void choose_system_directory() {
    const Workplace& place = CurrentWorkplace();
    std::error_code ignored;
    if (!place.root.empty()) {
        fs::path root = fs::absolute(place.root, ignored).lexically_normal();
        if (!root.has_filename()) root = root.parent_path();  // "dir/"
        SetSystemDirectory(root.string());
        return;
    }
    const fs::path here = fs::current_path(ignored);
    SetSystemDirectory(directory_upwards(here).value_or(place.installation).string());
}

void open_system_directory(Opening opening) {
    const std::string& root = SystemDirectory();
    const std::string path = TreePath(root, kConfiguration);
    const bool configured = holds(root, kConfiguration);
    if (!configured && !CurrentWorkplace().root.empty()) {
        throw CommandError("'" + root + "' is no system directory, for it holds no " +
                           kConfiguration + "; 'halvern init " + root + "' makes it one");
    }
    if (!configured && opening == Opening::kLook) {
        std::error_code ignored;
        throw CommandError(std::string("there is no ") + kConfiguration + " in '" +
                           fs::current_path(ignored).string() +
                           "' or a directory above it, nor in the installation '" + root +
                           "', so that there is nothing to show yet; 'halvern init DIR' makes a "
                           "directory to work in");
    }
    if (opening == Opening::kMake) CreateInstallationTree();
    if (ReadGlobalConfig(path) != 0) {
        throw CommandError(
            configured ? "cannot read the configuration '" + path + "'; check its permissions"
                       : "the installation '" + root +
                             "' is not yours to write to; 'halvern init DIR' makes a directory of "
                             "your own, and the commands work in it and below it");
    }
    note_fallback(path);
}

void open_workplace(Opening opening) {
    open_system_directory(opening);
    const std::string& asked = CurrentWorkplace().prospect;
    const std::string name = asked.empty() ? LastProspect() : asked;
    if (CurrentProspect().open(name) == 0) return;
    const std::string file = Prospect::file_path(name);
    if (std::error_code ignored; Prospect::is_name(name) && fs::exists(file, ignored)) {
        throw CommandError("cannot read the prospect file '" + file + "'; check its permissions");
    }
    throw CommandError("there is no prospect '" + name +
                       "'; 'halvern prospect list' names those there are, 'halvern prospect "
                       "create " +
                       name + "' makes it");
}

void make_system_directory(const fs::path& directory) {
    const fs::path& installation = CurrentWorkplace().installation;
    make_directory(directory / "bin");
    make_directory(directory / "header");
    // The programs themselves, so that a chain of links cannot break in the middle.
    for (const char* name : kPrograms) {
        const std::string file = program_file(installation, name);
        std::error_code error;
        const fs::path program = fs::canonical(installation / "bin" / file, error);
        if (error) {
            throw CommandError("the installation lacks '" + (installation / "bin" / file).string() +
                               "'; install Halvern again");
        }
        link_program(program, directory / "bin" / file);
    }
    const fs::path header = directory / "header" / "default";
    std::error_code error;
    if (!fs::exists(header, error)) {
        fs::copy_file(installation / "header" / "default", header, error);
        if (error) throw CommandError("cannot make '" + header.string() + "': " + error.message());
    }
    SetSystemDirectory(directory.string());
    CreateInstallationTree();
    if (ReadGlobalConfig(TreePath(directory.string(), kConfiguration)) != 0) {
        throw CommandError("cannot write '" + (directory / kConfiguration).string() +
                           "'; check disk space and permissions on this directory");
    }
}

std::string installed_program(std::string_view name) {
    std::string path = TreePath(SystemDirectory(), "bin/" + program_file(SystemDirectory(), name));
    std::error_code ignored;
    if (fs::is_regular_file(path, ignored)) return path;
    throw CommandError("there is no program '" + path + "'; 'halvern init " + SystemDirectory() +
                       "' links it there");
}

bool is_usable_name(const std::string& name) {
    constexpr std::size_t kLongest = 180;
    const auto is_letter_or_digit = [](char c) {
        return static_cast<unsigned char>(c) >= 0x80 || std::isalnum(static_cast<unsigned char>(c));
    };
    return Prospect::is_name(name) && name.front() != '.' && name.front() != '-' &&
           name.size() <= kLongest && printable(name) == name && is_one_line(name) &&
           std::ranges::any_of(name, is_letter_or_digit);
}

std::vector<std::string> file_names(const std::string& directory) {
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator{}; entry.increment(error)) {
        std::error_code unknown;
        std::string name = entry->path().filename().string();
        if (entry->is_regular_file(unknown) && !name.starts_with('.') &&
            !unfinished_file_owner(name)) {
            names.push_back(std::move(name));
        }
    }
    std::ranges::sort(names);
    return names;
}

std::optional<std::string> file_text(const std::string& path) {
    Result<std::string> text = read_text_file(path);
    if (!text) return {};
    return std::move(*text);
}

std::vector<std::string> split_lines(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        lines.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return lines;
}

}  // namespace halvern
