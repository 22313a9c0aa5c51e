#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace halvern {

/// Where the commands work: a system directory, in it a prospect. Process-wide.
struct Workplace {
    std::filesystem::path installation;  ///< where this program is installed: the parent of its bin
    std::string root;                    ///< as --root names it; empty: found by itself
    std::string prospect;                ///< as --prospect names it; empty: the one used last
};
Workplace& CurrentWorkplace();

/// The directory that holds the program's bin and header/default; where a link led to the program,
/// that of the program itself.
std::filesystem::path installation_of(const std::string& argument0);

/// The nearest directory from `from` upwards that holds halvern.cfg.
std::optional<std::filesystem::path> directory_upwards(const std::filesystem::path& from);

/// Sets the system directory: the workplace's root, else the nearest one upwards from the current
/// directory, else the installation. Touches nothing.
void choose_system_directory();

/// Completes the tree of the system directory and reads its configuration. CommandError when it is
/// no system directory or cannot be one.
void open_system_directory();

/// The same, and the prospect becomes the current one. CommandError when there is no such prospect.
void open_workplace();

/// Makes `directory` a system directory of its own: links to the installed programs, a copy of the
/// header description, the tree and the configuration. What is there stays, links are renewed.
void make_system_directory(const std::filesystem::path& directory);

/// Path of the program of that name beside the system directory's others; CommandError when it is
/// missing.
std::string installed_program(std::string_view name);

/// Whether a prospect or a flow can be called so: a name that can stand in a path, on a command
/// line and in a line of a flow.
bool is_usable_name(const std::string& name);

/// Path of a flow: a text with "/" is a file; else a name in the prospect's flow directory.
std::string flow_path(const std::string& name);

/// The bytes of a file that people write or could; nothing when it cannot be read or is larger.
std::optional<std::string> file_text(const std::string& path);

}  // namespace halvern
