#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// Where the commands work: a system directory, in it a prospect. Process-wide.
struct Workplace {
    std::filesystem::path installation;  ///< where this program is installed: the parent of its bin
    std::string root;                    ///< as --root names it; empty: found by itself
    std::string prospect;                ///< as --prospect names it; empty: the one used last
    std::vector<std::string> notes;      ///< what a person should know besides, one sentence each
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

/// What to do where there is no configuration yet: say where it was looked for, or make one.
enum class Opening { kLook, kMake };

/// Reads the configuration of the system directory, whose tree kMake completes. CommandError when
/// it is no system directory or cannot be one.
void open_system_directory(Opening opening = Opening::kLook);

/// The same, and the prospect becomes the current one. CommandError when there is no such prospect.
void open_workplace(Opening opening = Opening::kLook);

/// Makes `directory` a system directory of its own: links to the installed programs, a copy of the
/// header description, the tree and the configuration. What is there stays, links are renewed.
void make_system_directory(const std::filesystem::path& directory);

/// Path of the program of that name beside the system directory's others; CommandError when it is
/// missing.
std::string installed_program(std::string_view name);

/// Whether a prospect or a flow can be called so: a letter or a digit at least, and nothing that
/// cannot be in a path, on a command line or in a line of a flow.
bool is_usable_name(const std::string& name);

/// The regular files in a directory by name; hidden ones, and what is only being written, left out.
std::vector<std::string> file_names(const std::string& directory);

/// The bytes of a file that people write or could; nothing when it cannot be read or is larger.
std::optional<std::string> file_text(const std::string& path);

/// The text's lines, without their "\n".
std::vector<std::string> split_lines(const std::string& text);

}  // namespace halvern
