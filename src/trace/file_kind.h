#pragma once

#include <cstddef>
#include <span>

#include "platform/block_reader.h"

namespace halvern {

/// What a file with traces is by its first bytes, whatever its name. These are the signatures that
/// settle the kind; SEG-Y has none, and is what is left to try.
enum class FileKind { kDataset, kTapeImage, kSegd, kSpsText, kText, kOther };

/// Moves the file's position.
FileKind file_kind(BlockReader& file);

/// What a dataset's main file begins with: readers compare these 9 characters.
inline constexpr char kDatasetMagic[] = "KDFILE001";

/// Whether a SEG-D record or the label of a SEG-D tape begins here.
bool begins_segd(std::span<const std::byte> bytes);
/// Whether the 128 characters of such a label begin here.
bool begins_storage_label(std::span<const std::byte> bytes);

/// Whether nine of ten bytes are letters, digits, signs and blanks, all in EBCDIC or all in ASCII.
bool is_text(std::span<const std::byte> bytes);

}  // namespace halvern
