#include <algorithm>
#include <filesystem>

#include "flow/process_flow_item.h"
#include "platform/replace_file.h"

namespace halvern {

bool OutputFlowItem::CheckOutputPath(const std::string& path, bool may_be_read) const {
    const std::string name = path.substr(path.find_last_of("/\\") + 1);
    if (name.empty() || name == "NONE") {
        Error("Output file '%s' has not been properly selected\n", path.c_str());
        return false;
    }
    if (unfinished_file_owner(name)) {
        Error(
            "Output file '%s' has the name of a file that is being written to replace another "
            "(.new and a number).  Choose another name.\n",
            path.c_str());
        return false;
    }
    const auto is_path = [&path](const std::string& other) {
        std::error_code differs;
        return other == path || std::filesystem::equivalent(other, path, differs);
    };
    for (const FlowItem* item = previous(); item; item = item->previous()) {
        const std::vector<std::string> read = item->FilesRead();
        const auto input = std::ranges::find_if(read, is_path);
        if (!may_be_read && input != read.end()) {
            Error(
                "Output file '%s' is the input file '%s'.  "
                "Choose another file, or the option OVERWRITE INPUT.\n",
                path.c_str(), input->c_str());
            return false;
        }
        if (std::ranges::any_of(item->FilesWritten(), is_path)) {
            Error("Another output of this flow writes to '%s'.  Choose another file.\n",
                  path.c_str());
            return false;
        }
    }
    return true;
}

}  // namespace halvern
