#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "trace/header_definition.h"

namespace halvern::segd {

/// The blocks that values can be copied from, as a description file names them: G1, G2, GN (the
/// first general header after those), CS (the trace's channel set descriptor), TH (its trace
/// header), TE1 … TE7 (its extensions), EXT and XTN (the record's extended and external header).
enum class Group : int {
    kG1,
    kG2,
    kGN,
    kCS,
    kTH,
    kTE1,
    kTE2,
    kTE3,
    kTE4,
    kTE5,
    kTE6,
    kTE7,
    kExt,
    kXtn
};
inline constexpr int kGroups = 14;
/// The bytes of each for one trace; empty where the tape has none.
using GroupBytes = std::array<std::span<const std::byte>, kGroups>;

/// One value to copy: "HEADERWORD GROUP BYTE TYPE".
struct Transcription {
    enum class Type { kUnsigned, kSigned, kDecimal, kFloat };

    std::string word;     ///< of the header definition
    int word_index = -1;  ///< in the definition
    Group group{};
    std::size_t offset = 0;  ///< of the first byte, from 0; the file counts from 1
    Type type{};
    int size = 0;  ///< bytes; decimal digits for kDecimal, in as many bytes as hold them

    /// The entry in a line; nothing when it is not one, or reaches past the end of its block.
    static std::optional<Transcription> parse(std::string_view line);
    /// The value, or nothing when the tape does not have it or a digit is not decimal. An odd
    /// number of digits begins in the low half of its first byte.
    std::optional<double> value(const GroupBytes& groups) const;
};

/// The description file: what else to copy from SEG-D headers. One entry a line; "#" begins a
/// comment.
struct Description {
    bool found = false;  ///< whether the file could be read
    std::vector<Transcription> entries;
    std::vector<std::string> problems;  ///< of entries that were left out, ready to be logged

    static Description read(const std::string& path, const TraceHeaderDefinition& definition);
    /// Writes every value that is there to the definition's attached image.
    void apply(const GroupBytes& groups, TraceHeaderDefinition& definition) const;
};

}  // namespace halvern::segd
