#pragma once

#include <string>

#include "platform/block_reader.h"

namespace halvern {

/// Why a file, by its bytes, is certainly not the SEG-Y that its binary header would have it read
/// as: what it is instead, and what shows it.
struct SegyRefusal {
    enum class Kind {
        kNone,
        kDataset,
        kTapeImage,
        kSegd,
        kSpsText,
        kText,
        kBareTraces,       ///< traces from the first byte on, without a line header
        kLittleEndian,     ///< numbers with the least byte first
        kSwappedPairs,     ///< bytes exchanged in pairs
        kRevision2Layout,  ///< fields of revision 2 move or resize the records
        kTextForTraces,    ///< a text header where the first trace is due
        kOtherSampleSize,  ///< records of the format code's own sample size fill the file
        kNotIeee,          ///< the words under another code than 1, 3 and 5 are no IEEE numbers
    };
    Kind kind = Kind::kNone;
    std::string evidence = {};  ///< for the user, where there is more to say than the kind

    explicit operator bool() const { return kind != Kind::kNone; }
    /// The end of a sentence about the file; the same wherever a file is refused.
    std::string text() const;
};

/// Looks at the first header bytes of `file`, and at a few traces where the format code leaves
/// doubt. Moves the file's position.
SegyRefusal refuse_segy(BlockReader& file);

}  // namespace halvern
