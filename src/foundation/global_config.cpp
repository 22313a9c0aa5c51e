#include "foundation/global_config.h"

#include <cstdio>
#include <filesystem>
#include <memory>

#include "foundation/key_readers.h"
#include "foundation/messages.h"
#include "foundation/system_paths.h"
#include "platform/message_box.h"
#include "platform/replace_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

struct FontKey {
    Font font;
    const char* key;
    const char* standard;
};

// In the order in which they are read and written.
constexpr FontKey kFontKeys[] = {
    {Font::kSmall, "FONTSMALL=", "bf6x12"},
    {Font::kMedium, "FONTMEDIUM=", "6x14"},
    {Font::kLarge, "FONTLARGE=", "b9x16"},
    {Font::kFixedList, "FONTFIXEDLIST=", "bf6x14"},
    {Font::kList, "FONTLIST=", "f6x14"},
    {Font::kText, "FONTTEXT=", "f6x14"},
    {Font::kFixedText, "FONTFIXEDTEXT=", "f6x14"},
    {Font::kBottomAnnotation, "FONTBOTTOMANNO=", "bf6x12"},
    {Font::kDisplayHeading, "FONTDISPLAYHEADING=", "b6x14"},
    {Font::kDisplayAnnotation, "FONTDISPLAYANNO=", "bf6x12"},
};
static_assert(std::size(kFontKeys) == kFonts);

bool is_directory(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

void make_directory(const std::string& path) {
    std::error_code ignored;
    if (!fs::exists(path, ignored)) fs::create_directory(path, ignored);
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

void GlobalConfig::set_defaults() {
    *this = GlobalConfig{};
    for (const FontKey& entry : kFontKeys) {
        fonts_[static_cast<std::size_t>(entry.font)] = entry.standard;
    }
    font_face_ = "Verdana";
    fixed_face_ = "Courier New";
    use_standard_scratch_directory();
}

void GlobalConfig::use_standard_scratch_directory() {
    scratch_directory_ = TreePath(SystemDirectory(), "scratch");
    make_directory(scratch_directory_);
}

void GlobalConfig::use_standard_data_directory() {
    data_directories_ = {TreePath(SystemDirectory(), "data")};
    make_directory(data_directories_.front());
}

int GlobalConfig::read(std::string path) {
    set_defaults();
    path_ = std::move(path);

    std::error_code ignored;
    if (!fs::exists(path_, ignored)) {
        use_standard_data_directory();
        return write();
    }
    int result = -1;
    const std::unique_ptr<std::FILE, CloseFile> file(
        fs::is_regular_file(path_, ignored) ? std::fopen(path_.c_str(), "rb") : nullptr);
    if (file) {
        char line[199];  // a longer line is read in pieces
        while (std::fgets(line, sizeof line, file.get())) {
            std::string text(line);
            if (text.ends_with('\n')) text.pop_back();
            read_line(text.c_str());
        }
        result = std::ferror(file.get()) ? -1 : 0;
    }

    if (data_directories_.empty()) use_standard_data_directory();
    if (!is_directory(scratch_directory_)) {
        const std::string given = scratch_directory_;
        use_standard_scratch_directory();
        if (given != scratch_directory_) {
            LogPrint("Scratch directory '%s' does not exist.  Using '%s'.\n", given.c_str(),
                     scratch_directory_.c_str());
        }
    }
    return result;
}

void GlobalConfig::read_line(const char* line) {
    if (ReadKey(line, "MINDISKSPACE=", min_disk_space_mb_)) {
        LogPrint("Minimum Disk Space = %d\n", min_disk_space_mb_);
    }
    if (ReadKey(line, "MAXFILESIZE=", max_file_size_mb_)) {
        LogPrint("Maximum File Size  = %d\n", max_file_size_mb_);
    }
    if (ReadKey(line, "SCRATCHDIR=", scratch_directory_)) {
        LogPrint("Scratch Directory  = %s\n", scratch_directory_.c_str());
    }
    for (const FontKey& entry : kFontKeys) {
        if (ReadKey(line, entry.key, fonts_[static_cast<std::size_t>(entry.font)])) break;
    }
    if (ReadKey(line, "FONTFACE=", font_face_) && font_face_.size() > kLongestFace) {
        font_face_.resize(kLongestFace);
    }
    if (ReadKey(line, "FIXEDFACE=", fixed_face_) && fixed_face_.size() > kLongestFace) {
        fixed_face_.resize(kLongestFace);
    }
    std::string value;
    if (tape_devices_.size() < kMostDevices && ReadKey(line, "TAPEDEVICE=", value)) {
        add_tape_device(value);
    }
    if (data_directories_.size() < kMostDirectories && ReadKey(line, "DATADIR=", value) &&
        value != "NONE") {
        add_data_directory(value);
    }
}

void GlobalConfig::add_tape_device(const std::string& value) {
    LogPrint("Tape Device        = %s\n", value.c_str());
    // The path of an image may hold blanks; a drive's name ends at the first one.
    constexpr std::string_view kImage = " image";
    const std::size_t end =
        value.ends_with(kImage) ? value.size() - kImage.size() : value.find_first_of(" ,");
    if (end == std::string::npos || value[end] != ' ') {
        show_message_box("Configuration Error",
                         "The 'TAPEDEVICE=' line in your configuration file is not correct.\n"
                         "   example:    TAPEDEVICE=/dev/rmt/0 8mm\n"
                         "   example:    TAPEDEVICE=/dev/rmt/1 3480\n"
                         "Current configuration file is '" +
                             path_ + "'\n");
    }
    tape_devices_.push_back(
        {.name = value.substr(0, end),
         .type = end == std::string::npos ? std::string() : value.substr(end + 1)});
}

void GlobalConfig::add_data_directory(const std::string& value) {
    LogPrint("Data Directory     = %s\n", value.c_str());
    if (!is_directory(value)) {
        show_message_box(
            "Halvern Configuration Warning",
            "DATADIR '" + value + "' does not exist.\nPlease check your global configuration");
    }
    data_directories_.push_back(value);
}

std::string GlobalConfig::text() const {
    std::string text = "SCRATCHDIR=" + scratch_directory_ + "\n";
    text += "MINDISKSPACE=" + std::to_string(min_disk_space_mb_) + "\n";
    text += "MAXFILESIZE=" + std::to_string(max_file_size_mb_) + "\n";
    for (const FontKey& entry : kFontKeys) {
        if (!font(entry.font).empty()) text += entry.key + font(entry.font) + "\n";
    }
    text += "FONTFACE=" + font_face_ + "\n";
    text += "FIXEDFACE=" + fixed_face_ + "\n";
    for (const TapeDeviceName& device : tape_devices_) {
        text += "TAPEDEVICE=" + device.name + " " + device.type + "\n";
    }
    for (const std::string& directory : data_directories_) text += "DATADIR=" + directory + "\n";
    return text;
}

int GlobalConfig::write() const {
    const Fault fault = replace_file(path_, text());
    if (!fault) return 0;
    LogPrint("Cannot write configuration file '%s': %s.\n", path_.c_str(), fault.reason().c_str());
    return -1;
}

GlobalConfig& CurrentConfig() {
    static GlobalConfig config;
    return config;
}

int ReadGlobalConfig(const std::string& path) { return CurrentConfig().read(path); }
int WriteGlobalConfig() { return CurrentConfig().write(); }

}  // namespace halvern
