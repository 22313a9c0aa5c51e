#include "platform/program_path.h"

#include <filesystem>

namespace halvern {

namespace fs = std::filesystem;

std::string program_path(const std::string& argument0) {
    std::error_code error;
    // A name alone was looked for along PATH: a file of that name here need not be the program.
    if (!fs::path(argument0).has_parent_path() || !fs::is_regular_file(argument0, error)) {
        return reported_program_path();
    }
    const fs::path absolute = fs::absolute(argument0, error);
    if (error) return reported_program_path();
    // Callers cut the last names off, which must not meet "." or "..". Taking those away on paper
    // is wrong behind a link to a directory; there the directory itself is resolved.
    const fs::path plain = absolute.lexically_normal();
    if (fs::equivalent(plain, absolute, error)) return plain.string();
    const fs::path directory = fs::canonical(absolute.parent_path(), error);
    return error ? absolute.string() : (directory / absolute.filename()).string();
}

}  // namespace halvern
