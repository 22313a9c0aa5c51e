#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "segd/channel_set.h"
#include "segd/general_header.h"
#include "trace/sample_format.h"
#include "trace/sample_interval.h"

namespace halvern::segd {

/// The recording system's way with the standard, as SEGDTYPE stores it.
enum class Dialect : int {
    kOther = 0,      ///< the standard
    kSercel368 = 1,  ///< revision 0: further general header blocks are private, nothing is escaped
    kSercel388 = 2,  ///< the standard
    kIoRsr = 3,      ///< the standard
};

/// How the samples of a data format code are encoded; nothing for a code that is not read, which is
/// all but 8015, 8036, 8048 and 8058.
std::optional<SampleFormat> sample_format_of(int format_code);

/// Why a record's header cannot be used.
enum class HeaderFault {
    kNone,
    kGeneralHeader,  ///< digits that are not decimal, or fewer bytes than the header counts
    kRevision3,      ///< laid out in another way, which is not read
    kFormat,         ///< samples in another format than 8015, 8036, 8048 and 8058
    kChannelSet,     ///< a channel set descriptor makes no sense, or there is none
};

/// How long a record's header is, from its general headers.
struct HeaderLayout {
    GeneralHeader1 general;
    std::optional<GeneralHeader2> second;  ///< none: the record is of revision 0
    int file_number;
    int channel_sets;  ///< descriptors per scan type, those not in use included
    int extended_blocks;
    int external_blocks;

    static constexpr std::size_t kMostGeneralBytes = 16 * kBlockBytes;

    bool revision_0() const { return !second; }
    std::int64_t descriptors_begin() const { return kBlockBytes * (1 + general.additional_blocks); }
    std::int64_t extended_begin() const;
    std::int64_t external_begin() const;
    std::int64_t bytes() const;  ///< of the whole header

    /// `bytes` are the record's first ones, up to kMostGeneralBytes.
    static HeaderFault parse(std::span<const std::byte> bytes, Dialect dialect,
                             HeaderLayout& layout);
};

/// Everything before the traces of a record.
class RecordHeader {
public:
    /// Takes over the layout's bytes() bytes.
    HeaderFault parse(const HeaderLayout& layout, std::span<const std::byte> bytes);

    const HeaderLayout& layout() const { return *layout_; }
    const GeneralHeader1& general() const { return layout_->general; }
    /// Channel set descriptors in the order of their traces.
    const std::vector<ChannelSet>& sets() const { return sets_; }
    /// One for each source set; empty where the tape has none.
    const std::vector<GeneralHeaderN>& sources() const { return sources_; }

    SampleFormat format() const { return *sample_format_of(general().format); }
    int file_number() const { return layout_->file_number; }
    double revision() const;
    int trailer_blocks() const { return layout_->second ? layout_->second->trailer_blocks : 0; }
    double record_length_ms() const;
    double base_interval_ms() const { return general().base_interval / 16.0; }
    SampleInterval sample_interval(const ChannelSet& set) const;
    /// Sample intervals from a set's start to its end, or in the record length where the descriptor
    /// gives no times. Most systems record one sample more.
    std::int64_t intervals(const ChannelSet& set) const;
    std::int64_t traces() const { return traces_; }  ///< channels of all sets

    // The blocks as recorded; empty where the record has none.
    std::span<const std::byte> bytes() const { return bytes_; }
    std::span<const std::byte> general_block(int number) const;  ///< from 1
    std::span<const std::byte> descriptor(std::size_t set) const;
    std::span<const std::byte> extended() const;
    std::span<const std::byte> external() const;

private:
    std::optional<HeaderLayout> layout_;
    std::vector<ChannelSet> sets_;
    std::vector<GeneralHeaderN> sources_;
    std::vector<std::byte> bytes_;
    std::int64_t traces_ = 0;
};

}  // namespace halvern::segd
