#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace halvern {

/// Places in the table of font names.
enum class Font : int {
    kFixedList = 0,
    kBottomAnnotation = 1,
    kList = 2,
    kDisplayHeading = 3,
    kDisplayAnnotation = 4,
    kText = 5,
    kFixedText = 6,
    kSmall = 7,
    kMedium = 8,
    kLarge = 9,
};
inline constexpr int kFonts = 10;

struct TapeDeviceName {
    std::string name;  ///< "/dev/nst0", or the path of a tape image
    std::string type;  ///< "8mm", "3480", … or "image"
};

/// Settings of the file halvern.cfg: where data and scratch space are, disk limits, fonts, tapes.
class GlobalConfig {
public:
    static constexpr std::size_t kMostDevices = 64;
    static constexpr std::size_t kMostDirectories = 64;
    static constexpr std::size_t kLongestFace = 80;

    /// Resets every value to its default, then takes over what the file at `path` says, with log
    /// lines. A missing file is written with the defaults. The scratch and data directories under
    /// the system directory are made when they are the ones in use. 0, or -1 when the file is there
    /// and cannot be read, or is missing and cannot be written; the values can be used either way.
    [[nodiscard]] int read(std::string path);

    /// Replaces the file that was read. 0, or -1 with a log line.
    [[nodiscard]] int write() const;

    /// Takes over one KEY=value line; a key that is not known is ignored.
    void read_line(const char* line);

    /// The file's contents.
    std::string text() const;

    const std::string& path() const { return path_; }
    const std::string& scratch_directory() const { return scratch_directory_; }
    int min_disk_space_mb() const { return min_disk_space_mb_; }  ///< kept free on a data disk
    int max_file_size_mb() const { return max_file_size_mb_; }    ///< of one native data file
    const std::string& font(Font font) const { return fonts_[static_cast<std::size_t>(font)]; }
    const std::string& font_face() const { return font_face_; }
    const std::string& fixed_face() const { return fixed_face_; }
    const std::vector<TapeDeviceName>& tape_devices() const { return tape_devices_; }
    const std::vector<std::string>& data_directories() const { return data_directories_; }

private:
    void set_defaults();
    void use_standard_scratch_directory();
    void use_standard_data_directory();
    void add_tape_device(const std::string& value);
    void add_data_directory(const std::string& value);

    std::string path_;
    std::string scratch_directory_;
    int min_disk_space_mb_ = 50;
    int max_file_size_mb_ = 1000;
    std::array<std::string, kFonts> fonts_;  // by Font
    std::string font_face_;
    std::string fixed_face_;
    std::vector<TapeDeviceName> tape_devices_;
    std::vector<std::string> data_directories_;
};

/// This process's settings.
GlobalConfig& CurrentConfig();

/// GlobalConfig::read and write on them.
[[nodiscard]] int ReadGlobalConfig(const std::string& path);
[[nodiscard]] int WriteGlobalConfig();

}  // namespace halvern
