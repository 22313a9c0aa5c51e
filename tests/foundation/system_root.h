#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/system_paths.h"
#include "support/temporary_folder.h"

namespace halvern::testing_support {

/// A system directory of its own, empty at first.
class SystemRoot : public TemporaryFolder {
public:
    SystemRoot() { SetSystemDirectory(path().string()); }
    ~SystemRoot() { SetSystemDirectory(before_); }

    /// Everything below it in order, directories with a "/" behind them.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path())) {
            names.push_back(entry.path().lexically_relative(path()).string() +
                            (entry.is_directory() ? "/" : ""));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::string before_ = SystemDirectory();
};

}  // namespace halvern::testing_support
