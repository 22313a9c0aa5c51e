#include "foundation/installation_tree.h"

#include <filesystem>

#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "platform/replace_file.h"

namespace halvern {

namespace fs = std::filesystem;

void CreateInstallationTree() {
    const std::string& root = SystemDirectory();
    std::error_code ignored;
    fs::create_directory(TreePath(root, "Prospects"), ignored);
    const std::string data = TreePath(root, "Data");
    fs::create_directory(data, ignored);

    Prospect standard;
    standard.assign("default", {data});
    standard.create_directories();

    const std::string defaults = TreePath(root, "Halvern.defaults");
    const std::string prospect = Prospect::file_path("default");
    if (!fs::exists(defaults, ignored)) {
        static_cast<void>(replace_file(defaults, "PROSPECT=" + prospect + "\n"));
    }
    if (!fs::exists(prospect, ignored)) {
        static_cast<void>(replace_file(prospect, "DATADIR=" + data + "\n"));
    }
}

}  // namespace halvern
