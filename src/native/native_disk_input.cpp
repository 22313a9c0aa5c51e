#include "native/native_disk_input.h"

#include <filesystem>

namespace halvern {

namespace {
constexpr int kProgressInterval = 1000;
}

NativeDiskInput::NativeDiskInput(const FlowSection& section, LogFlag log)
    : InputFlowItem(FlowItemKind::kNativeDiskInput, log) {
    Configure(section);
}

ParameterList NativeDiskInput::Parameters() {
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, "NONE"},
         .log = "Input disk file             = %s\n",
         .field = {.label = "FileName",
                   .prompt = "Select the input data set.",
                   .help = "Choose a disk Halvern Data file.",
                   .kind = FieldKind::kInputFile}},
    };
}

DialogTexts NativeDiskInput::WindowTexts() const {
    return {.title = "Halvern Disk Input Parameters",
            .help_title = "Halvern Disk Input Help",
            .help_page = "Halvern Parameters",
            .already_up = "Halvern Disk Input Interface is already up."};
}

std::vector<std::string> NativeDiskInput::FilesRead() const {
    std::vector<std::string> files = reader_.parts().paths();
    files.push_back(file_);
    return files;
}

void NativeDiskInput::OpenSource() {
    std::error_code failed;
    if (!std::filesystem::exists(file_, failed)) {
        Error("Input file '%s' does not exist.\n", file_.c_str());
        return TerminateJob(kJobError);
    }
    switch (reader_.open(file_, kProgressInterval, *this)) {
        case NativeOpening::kOpened:
            return;
        case NativeOpening::kNotValid:
            Error("Input file '%s' cannot be opened.\n", file_.c_str());
            break;
        case NativeOpening::kNoDefinition:
            Error("Cannot read trace header format '%s'.\n", reader_.parts().desc_path.c_str());
            break;
    }
    TerminateJob(kJobError);
}

ReadResult NativeDiskInput::ReadNext() {
    if (reader_.read_next() == 1) return ReadResult::kTrace;
    if (!reader_.fault()) return ReadResult::kEnd;
    Error("'%s': %s.\n", file_.c_str(), reader_.fault().reason().c_str());
    return ReadResult::kFailed;
}

}  // namespace halvern
