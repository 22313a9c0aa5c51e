#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace halvern::testing_support {

/// A folder of its own for one test, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::string file(std::string_view name) const { return (path_ / name).string(); }
    /// Makes a file of these bytes and gives its path.
    std::string write(std::string_view name, std::string_view bytes) const;

private:
    std::filesystem::path path_;
};

/// The bytes of a file; fails the test when it cannot be read.
std::string file_bytes(const std::string& path);

/// Path of a real field data file, from the folder that HALVERN_DATA names, else from the folder
/// shared/data beside the checkout. Nothing, with a line that says so, when it is not there.
std::optional<std::string> field_data(std::string_view name);

}  // namespace halvern::testing_support
