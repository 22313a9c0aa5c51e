#pragma once

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "foundation/system_paths.h"
#include "support/temporary_folder.h"

namespace halvern::testing_support {

/// A system directory of its own, empty at first.
class SystemRoot {
public:
    SystemRoot() { SetSystemDirectory(path()); }
    ~SystemRoot() { SetSystemDirectory(before_); }
    SystemRoot(const SystemRoot&) = delete;
    SystemRoot& operator=(const SystemRoot&) = delete;

    std::string path() const { return folder_.path().string(); }
    std::string file(const std::string& name) const { return folder_.file(name); }
    std::string write(const std::string& name, const std::string& bytes) const {
        return folder_.write(name, bytes);
    }
    /// Everything below it in order, directories with a "/" behind them.
    std::vector<std::string> entries() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path())) {
            names.push_back(entry.path().lexically_relative(folder_.path()).string() +
                            (entry.is_directory() ? "/" : ""));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    TemporaryFolder folder_;
    std::string before_ = SystemDirectory();
};

}  // namespace halvern::testing_support
