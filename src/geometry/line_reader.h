#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace halvern {

/// Reads a text file, or a text in memory, line by line. A line ends with LF, CR LF or CR, or with
/// the file. A line beyond the longest length is read in pieces of that length, each a line.
class LineReader {
public:
    static constexpr std::size_t kLongest = 1024;  ///< what `longest` may be at most

    /// Opens a file; see opened().
    LineReader(const std::string& path, std::size_t longest);
    /// Reads `text`, which must outlive the reader.
    static LineReader Over(std::string_view text, std::size_t longest);

    bool opened() const { return opened_; }
    /// Whether reading stopped at an error of the file system instead of the end.
    bool failed() const { return failed_; }

    /// The next line, without its end; valid until the next call. False at the end.
    [[nodiscard]] bool next(std::string_view& line);

    /// Of the line that next() gave, counted from 1. Pieces of one line have its number.
    std::int64_t line_number() const { return line_number_; }

    /// How many times next() would give a line from the start; leaves the reader there.
    std::int64_t count_lines();

private:
    explicit LineReader(std::size_t longest);
    bool refill();
    void rewind();

    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Closer> file_;
    std::vector<char> block_;  // of the file; empty for a text in memory
    std::string_view text_;    // the text in memory
    std::string_view window_;  // what is being read: a filled part of the block, or the text
    std::size_t at_ = 0;       // of the next character in the window
    std::array<char, kLongest> carry_;  // a line that began in an earlier window
    std::size_t longest_;
    std::int64_t line_number_ = 0;
    bool skip_newline_ = false;  // the last line ended with CR: an LF behind it belongs to it
    bool within_line_ = false;   // the last line was a piece: the next belongs to the same
    bool opened_ = false;
    bool failed_ = false;
};

}  // namespace halvern
