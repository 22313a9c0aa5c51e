#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/input_file.h"

namespace halvern {

/// Reads a text file, or a text in memory, line by line. A line ends with LF, CR LF or CR, or with
/// the file. A line is read in pieces of at most the longest length, its end counted as one
/// character, and each piece is a line: a line just as long as that is followed by an empty one.
class LineReader {
public:
    static constexpr std::size_t kLongest = 1024;  ///< what `longest` may be at most

    /// Opens a file, which must be a regular one; see opened().
    LineReader(const std::string& path, std::size_t longest);
    /// Reads `text`, which must outlive the reader.
    static LineReader Over(std::string_view text, std::size_t longest);

    bool opened() const { return opened_; }
    /// Bytes of the file or text when it was opened.
    std::int64_t bytes() const { return bytes_; }
    /// Bytes before the next line.
    std::int64_t position() const { return passed_ + static_cast<std::int64_t>(at_); }
    /// Why the file could not be opened, or why reading stopped before its end.
    const Fault& fault() const { return fault_; }

    /// The next line, without its end; valid until the next call. False at the end.
    [[nodiscard]] bool next(std::string_view& line);
    /// Whether that line came with its end: it is no piece that goes on, and not cut off by the
    /// end of the file.
    bool ended() const { return !within_line_; }

    /// Of the line that next() gave, counted from 1. Pieces of one line have its number.
    std::int64_t line_number() const { return line_number_; }

    /// How many times next() gives a line from here on; leaves the reader at the end.
    std::int64_t count_lines();

private:
    explicit LineReader(std::size_t longest);
    bool refill();

    std::optional<InputFile> file_;
    std::vector<char> block_;  // of the file; empty for a text in memory
    std::string_view window_;  // what is being read: a filled part of the block, or the text
    std::size_t at_ = 0;       // of the next character in the window
    std::array<char, kLongest> carry_;  // a line that began in an earlier window
    std::size_t longest_;
    std::int64_t bytes_ = 0;
    std::int64_t passed_ = 0;  // bytes of the windows before this one
    std::int64_t line_number_ = 0;
    bool skip_newline_ = false;  // the window ended with a line's CR: an LF after it belongs to it
    bool within_line_ = false;   // the last line had no end: the next belongs to the same
    bool opened_ = false;
    Fault fault_;
};

}  // namespace halvern
