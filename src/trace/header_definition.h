#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "trace/sample_format.h"

namespace halvern {

/// Type of a header word, as numbered in description files.
enum class HeaderType : int { kI2 = 0, kI4 = 1, kR4 = 2 };

/// One named field of the 240-byte trace header image.
struct HeaderWord {
    std::string name;         ///< up to 8 characters, case-sensitive, no blanks
    int location = 0;         ///< offset of the first byte, counted from 0
    int type = 0;             ///< a HeaderType; other values read as I2 and list as R4
    std::string description;  ///< blank-padded to exactly 50 characters
    int category = 0;         ///< index into the definition's categories
};

/// Names, places and types of the words of a trace header image, as a description file gives them,
/// and typed access to the image that is attached. One definition serves a whole job: inputs attach
/// each trace's image before the trace goes down the chain.
///
/// A word is looked up once by name and used by its index; the index of a missing word is -1, which
/// reads as 0 and drops what is written. A word that would reach past the image's end reads as 0
/// and drops writes, too.
class TraceHeaderDefinition {
public:
    explicit TraceHeaderDefinition(std::byte* image = nullptr) : image_(image) {}

    /// Reads a description file, replacing earlier contents. 0, or -1 with a log line when it
    /// cannot be opened. Category 0 is always "No Category".
    [[nodiscard]] int load(const std::string& path);

    /// Writes the description in the same fixed columns. 0, or -1 when nothing is loaded or the
    /// file cannot be written. Loading a saved file adds a second category named after the first.
    [[nodiscard]] int save(const std::string& path) const;

    /// Index of the first word of that exact name, or -1.
    int find(std::string_view name) const;

    /// The image (240 bytes, not owned) that get and set act on from now on.
    void attach(std::byte* image) { image_ = image; }
    std::byte* image() const { return image_; }

    int count() const { return static_cast<int>(words_.size()); }
    bool loaded() const { return loaded_; }
    const char* name(int index) const;         ///< null when index is outside 0 … count-1
    const char* description(int index) const;  ///< null likewise
    const char* category(int index) const;     ///< of word `index`; null likewise
    int type(int index) const;                 ///< 1 when index < 0
    int location(int index) const;             ///< 0 when index < 0
    const std::vector<HeaderWord>& words() const { return words_; }
    const std::vector<std::string>& categories() const { return categories_; }

    double get_double(int index) const;
    int get_int(int index) const;  ///< R4 is truncated toward zero and held within 32 bits
    /// I4 and I2 store the value truncated toward zero, I2 its low 16 bits; values beyond 32 bits
    /// are held at the nearest end, NaN stores 0. R4 stores it as a float.
    void set_double(int index, double value);
    /// Stores a number that somebody worked out: rounded half away from zero for I4 and I2. False,
    /// and the word stays as it is, when the word is missing or cannot hold the value.
    [[nodiscard]] bool store(int index, double value);

private:
    const HeaderWord* word(int index) const;  // null when index is outside 0 … count-1

    std::vector<HeaderWord> words_;
    std::vector<std::string> categories_;
    bool loaded_ = false;
    std::byte* image_ = nullptr;
};

/// What a scalar in a header multiplies its words by: its value, or 1 over it when it is negative.
inline double scalar_factor(double scalar) {
    if (scalar > 0) return scalar;
    return scalar < 0 ? -1 / scalar : 1;
}

}  // namespace halvern
