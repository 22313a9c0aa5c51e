#include "desk/workplace.h"

#include <cstdio>

#include "desk/command_error.h"
#include "foundation/global_config.h"
#include "foundation/installation_tree.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "inspect/captured_log.h"
#include "platform/program_path.h"
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

// Passes on what the reading of the configuration found wrong.
void report_fallback(const CapturedLog& log) {
    for (const std::string& line : log.lines()) {
        if (line.starts_with("Scratch directory '")) std::fprintf(stderr, "%s\n", line.c_str());
    }
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

void open_system_directory() {
    const std::string& root = SystemDirectory();
    const std::string path = TreePath(root, kConfiguration);
    const bool configured = holds(root, kConfiguration);
    if (!configured && !CurrentWorkplace().root.empty()) {
        throw CommandError("'" + root + "' is no system directory, for it holds no " +
                           kConfiguration + "; 'halvern init " + root + "' makes it one");
    }
    CapturedLog log;
    CreateInstallationTree();
    if (ReadGlobalConfig(path) != 0) {
        throw CommandError(
            configured ? "cannot read the configuration '" + path + "'; check its permissions"
                       : "the installation '" + root +
                             "' is not yours to write to; 'halvern init DIR' makes a directory of "
                             "your own, and the commands work in it and below it");
    }
    report_fallback(log);
}

void open_workplace() {
    open_system_directory();
    const std::string& asked = CurrentWorkplace().prospect;
    const std::string name = asked.empty() ? LastProspect() : asked;
    CapturedLog log;
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
    CapturedLog log;
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
    return Prospect::is_name(name) && name.front() != '.' && name.front() != '-' &&
           name.size() <= kLongest && is_one_line(name);
}

std::string flow_path(const std::string& name) {
    const bool is_path = name.find_first_of("/\\") != std::string::npos;
    if (is_path && is_one_line(name)) return name;
    if (!is_usable_name(name)) {
        throw CommandError("'" + name +
                           "' cannot name a flow; a file elsewhere is named with a '/', as in "
                           "./" +
                           name);
    }
    return CurrentProspect().path("flow", name);
}

std::optional<std::string> file_text(const std::string& path) {
    Result<std::string> text = read_text_file(path);
    if (!text) return {};
    return std::move(*text);
}

}  // namespace halvern
