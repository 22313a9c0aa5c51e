#pragma once

#include <filesystem>
#include <string>

#include "desk/workplace.h"
#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "support/temporary_folder.h"

namespace halvern::testing_support {

/// A system directory of a test's own with its prospect open.
class SystemPlace {
public:
    SystemPlace() {
        std::filesystem::create_directory(folder.path() / "header");
        std::filesystem::copy_file(HALVERN_SOURCE_DIR "/header/default",
                                   folder.path() / "header" / "default");
        CurrentWorkplace() = {};
        SetSystemDirectory(folder.path().string());
        open_workplace(Opening::kMake);
    }
    ~SystemPlace() { SetSystemDirectory(""); }

    TemporaryFolder folder;
};

}  // namespace halvern::testing_support
