#include "segd/record_header.h"

#include <algorithm>
#include <cmath>

#include "trace/sample_format.h"

namespace halvern::segd {

namespace {

constexpr std::int64_t kMostHeaderBytes = 16 * 1024 * 1024;  // no tape block is longer
constexpr std::int64_t kMostIntervals = 0xFFFFFE;            // sample counts have 24 bits
constexpr int kRecordLengthUnitTenths = 1024;                // 102.4 ms

Bytes<kBlockBytes> block_at(std::span<const std::byte> bytes, std::size_t offset) {
    return bytes.subspan(offset).first<kBlockBytes>();
}

// One maker of nodes counts external header blocks in three bytes.
bool counts_external_blocks_in_24_bits(const GeneralHeader1& general,
                                       const GeneralHeader2& second) {
    return general.manufacturer == 20 && second.revision_major == 1 && second.revision_minor == 6;
}

}  // namespace

std::optional<SampleFormat> sample_format_of(int format_code) {
    switch (format_code) {
        case 8015:
            return SampleFormat::kSegd8015;
        case 8036:
            return SampleFormat::kSegd8036;
        case 8048:
            return SampleFormat::kSegd8048;
        case 8058:
            return SampleFormat::kIeee;
        default:
            return {};
    }
}

std::int64_t HeaderLayout::extended_begin() const {
    return descriptors_begin() + std::int64_t{general.scan_types} *
                                     (channel_sets + general.skew_blocks) *
                                     static_cast<std::int64_t>(kBlockBytes);
}

std::int64_t HeaderLayout::external_begin() const {
    return extended_begin() +
           std::int64_t{extended_blocks} * static_cast<std::int64_t>(kBlockBytes);
}

std::int64_t HeaderLayout::bytes() const {
    return external_begin() +
           std::int64_t{external_blocks} * static_cast<std::int64_t>(kBlockBytes);
}

HeaderFault HeaderLayout::parse(std::span<const std::byte> bytes, Dialect dialect,
                                HeaderLayout& layout) {
    if (bytes.size() < kBlockBytes) return HeaderFault::kGeneralHeader;
    const std::optional<GeneralHeader1> general = GeneralHeader1::parse(bytes.first<kBlockBytes>());
    if (!general) {
        // Revision 3 has counts that are not decimal; its second block still tells it.
        const bool newer = bytes.size() >= 2 * kBlockBytes &&
                           GeneralHeader2::is_revision_3(block_at(bytes, kBlockBytes));
        return newer ? HeaderFault::kRevision3 : HeaderFault::kGeneralHeader;
    }
    layout = {.general = *general,
              .second = {},
              .file_number = general->file_number,
              .channel_sets = general->channel_sets,
              .extended_blocks = general->extended_blocks,
              .external_blocks = general->external_blocks};
    if (general->additional_blocks > 0 && dialect != Dialect::kSercel368) {
        if (bytes.size() < 2 * kBlockBytes) return HeaderFault::kGeneralHeader;
        const Bytes<kBlockBytes> second = block_at(bytes, kBlockBytes);
        if (GeneralHeader2::is_revision_3(second)) return HeaderFault::kRevision3;
        if (GeneralHeader2::is_one(second)) layout.second = GeneralHeader2::parse(second);
    }
    if (!sample_format_of(general->format)) return HeaderFault::kFormat;
    if (layout.second) {
        const GeneralHeader2& second = *layout.second;
        const auto resolve = [](int& count, int extended) {
            if (count == kExtended) count = extended;
        };
        resolve(layout.file_number, second.file_number);
        resolve(layout.channel_sets, second.channel_sets);
        resolve(layout.extended_blocks, second.extended_blocks);
        const bool in_24_bits = counts_external_blocks_in_24_bits(*general, second);
        const Bytes<3> wide = block_at(bytes, kBlockBytes).subspan<GeneralHeader2::kEH, 3>();
        resolve(layout.external_blocks,
                in_24_bits ? static_cast<int>(get_u24(wide)) : second.external_blocks);
    }
    const bool resolved = layout.file_number != kExtended && layout.channel_sets != kExtended &&
                          layout.extended_blocks != kExtended &&
                          layout.external_blocks != kExtended &&
                          (layout.second || general->record_length != kExtended);
    if (!resolved || layout.bytes() > kMostHeaderBytes) return HeaderFault::kGeneralHeader;
    return HeaderFault::kNone;
}

HeaderFault RecordHeader::parse(const HeaderLayout& layout, std::span<const std::byte> bytes) {
    layout_ = layout;
    bytes_.assign(bytes.begin(), bytes.end());
    sets_.clear();
    sources_.clear();
    traces_ = 0;
    for (int number = 3; !layout.revision_0() && number <= 1 + general().additional_blocks;
         ++number) {
        sources_.push_back(GeneralHeaderN::parse(general_block(number).first<kBlockBytes>()));
    }
    std::size_t offset = static_cast<std::size_t>(layout.descriptors_begin());
    for (int scan_type = 0; scan_type < general().scan_types; ++scan_type) {
        for (int i = 0; i < layout.channel_sets; ++i, offset += kBlockBytes) {
            const std::optional<ChannelSet> set =
                ChannelSet::parse(block_at(bytes_, offset), layout.revision_0());
            if (!set || (set->channels > 0 && !sample_interval(*set))) {
                return HeaderFault::kChannelSet;
            }
            sets_.push_back(*set);
            traces_ += set->channels;
        }
        offset += static_cast<std::size_t>(general().skew_blocks) * kBlockBytes;
    }
    return traces_ > 0 ? HeaderFault::kNone : HeaderFault::kChannelSet;
}

double RecordHeader::revision() const {
    if (!layout_->second) return 0;
    const int minor = layout_->second->revision_minor;
    return layout_->second->revision_major + minor / (minor < 10 ? 10.0 : 100.0);
}

double RecordHeader::record_length_ms() const {
    if (general().record_length != kExtended) {
        return general().record_length * kRecordLengthUnitTenths / 10.0;
    }
    return layout_->second->record_length_ms;
}

SampleInterval RecordHeader::sample_interval(const ChannelSet& set) const {
    constexpr int kPerSixteenth = SampleInterval::kPerMs / 16;
    return SampleInterval(general().base_interval * kPerSixteenth >> set.sub_scans);
}

std::int64_t RecordHeader::intervals(const ChannelSet& set) const {
    const double ms = set.end_ms > set.start_ms ? set.end_ms - set.start_ms : record_length_ms();
    const double exact = ms * 16.0 * (1 << set.sub_scans) / general().base_interval;
    // Record lengths are not whole milliseconds.
    return std::min(static_cast<std::int64_t>(exact + 1e-6), kMostIntervals);
}

std::span<const std::byte> RecordHeader::general_block(int number) const {
    if (number < 1 || number > 1 + general().additional_blocks) return {};
    return std::span(bytes_).subspan(static_cast<std::size_t>(number - 1) * kBlockBytes,
                                     kBlockBytes);
}

std::span<const std::byte> RecordHeader::descriptor(std::size_t set) const {
    const auto per_scan_type = static_cast<std::size_t>(layout_->channel_sets);
    const auto skew = static_cast<std::size_t>(general().skew_blocks);
    const std::size_t block = set + set / per_scan_type * skew;
    return std::span(bytes_).subspan(
        static_cast<std::size_t>(layout_->descriptors_begin()) + block * kBlockBytes, kBlockBytes);
}

std::span<const std::byte> RecordHeader::extended() const {
    const auto begin = static_cast<std::size_t>(layout_->extended_begin());
    return std::span(bytes_).subspan(begin,
                                     static_cast<std::size_t>(layout_->external_begin()) - begin);
}

std::span<const std::byte> RecordHeader::external() const {
    return std::span(bytes_).subspan(static_cast<std::size_t>(layout_->external_begin()));
}

}  // namespace halvern::segd
