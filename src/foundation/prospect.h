#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// Directories that every prospect has in each of its data directories, as in "spectra/phase".
const std::vector<std::string_view>& ProspectSubdirectories();

/// A named project: the data directories that its prospect file lists.
class Prospect {
public:
    /// A name is one level of a path: not empty, not "." or "..", without "/", "\" and ":".
    static bool is_name(std::string_view name);
    /// Path of the prospect file of that name.
    static std::string file_path(std::string_view name);

    /// Reads the prospect file of that name, with a log line. 0, or -1 with a log line and the
    /// prospect as it was when the file cannot be read.
    [[nodiscard]] int open(const std::string& name);

    /// Names the prospect without reading a file: a new one, to be saved.
    void assign(std::string name, std::vector<std::string> data_directories);

    /// Writes the prospect file. 0, or -1 with a log line.
    [[nodiscard]] int save() const;

    /// Makes those of the prospect's directories that are missing; failures are not reported.
    void create_directories() const;

    bool is_open() const { return !name_.empty(); }
    const std::string& name() const { return name_; }
    const std::vector<std::string>& data_directories() const { return data_directories_; }
    /// The first data directory; the configuration's first one when the prospect lists none.
    const std::string& data_directory() const;

    /// "data directory/prospect/subdirectory", with "/name" behind it unless that is empty.
    std::string path(std::string_view subdirectory, std::string_view name = {}) const;

private:
    std::string name_;
    std::vector<std::string> data_directories_;
};

/// The prospect that this process works in; is_open() says whether there is one.
Prospect& CurrentProspect();

/// Name of the prospect that was chosen last, from the file Halvern.defaults in the system
/// directory; "default" when it does not say.
std::string LastProspect();
/// Writes that file. 0, or -1 with a log line.
[[nodiscard]] int RememberProspect(const std::string& name);

}  // namespace halvern
