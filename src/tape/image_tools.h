#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "tape/tape_image.h"

namespace halvern {

/// What a user without a tape drive does with tape images. The functions say why they failed, in a
/// sentence without its full stop, or give an empty text; a file that they had begun to write is
/// then removed.

/// Equal things that follow one another on an image.
struct ImageRun {
    TapeImageItem item = TapeImageItem::kEndOfData;
    std::int64_t offset = 0;       ///< of the first, in bytes
    int file = 1;                  ///< the tape file it is in, from 1; a filemark ends its file
    std::int64_t first_block = 0;  ///< number of the first within its tape file, from 1
    std::int64_t count = 0;        ///< how many
    int length = 0;                ///< bytes of each block
};

/// Shows every run of an image in order; the last one is the end of data or a fault, which is then
/// the answer.
[[nodiscard]] std::string list_image(const std::string& image,
                                     const std::function<void(const ImageRun&)>& show);

struct ImageReport {
    std::int64_t blocks = 0;
    std::int64_t block_bytes = 0;  ///< of all blocks
    std::int64_t bad_blocks = 0;
    std::int64_t filemarks = 0;
    int files = 0;  ///< tape files that hold blocks
    int shortest_block = 0;
    int longest_block = 0;
    bool ends_with_two_filemarks = false;
    std::string fault;  ///< "the record at byte 3208 is cut short", or empty

    bool sound() const { return fault.empty() && bad_blocks == 0; }
};

/// Reads a whole image and counts.
[[nodiscard]] std::string check_image(const std::string& image, ImageReport& report);

/// Splits one disk file into tape blocks: gives each in order to `block` until that answers -1.
/// Says why the file cannot be split.
using BlockSplitter = std::function<std::string(
    const std::string& file, const std::function<int(std::span<const std::byte>)>& block)>;

/// Puts disk files on an image, one tape file each, with two filemarks at the end. An image that is
/// there is replaced only when `replace` says so, and only by a whole one.
[[nodiscard]] std::string make_image(std::span<const std::string> files, const std::string& image,
                                     bool replace, const BlockSplitter& split);

/// A SEG-Y file as it is on tape: a block of 3200 bytes, one of 400, one of 3200 for each
/// further text header and one for each trace.
std::string split_segy(const std::string& file,
                       const std::function<int(std::span<const std::byte>)>& block);

/// Writes each tape file of an image to a disk file of its own, its blocks end to end: `folder`/
/// `stem`0001`extension` and so on; `made` gets the paths. Files that are there are not replaced.
/// Bad blocks are written as far as their bytes are there, and counted.
[[nodiscard]] std::string extract_image(const std::string& image, const std::string& folder,
                                        const std::string& stem, const std::string& extension,
                                        std::vector<std::string>& made, std::int64_t& bad_blocks);

}  // namespace halvern
