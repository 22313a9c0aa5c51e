#include <gtest/gtest.h>

#include <cmath>

#include "segd/record_bytes.h"
#include "segd/record_header.h"
#include "segd/trace_header.h"

namespace halvern::segd {
namespace {

using namespace testing_support;

Bytes<kBlockBytes> block_of(const std::string& bytes) {
    return std::as_bytes(std::span(bytes)).first<kBlockBytes>();
}
HeaderFault parse(const std::string& bytes, RecordHeader& header,
                  Dialect dialect = Dialect::kOther) {
    const auto span = std::as_bytes(std::span(bytes));
    HeaderLayout layout;
    const HeaderFault fault = HeaderLayout::parse(
        span.first(std::min(span.size(), HeaderLayout::kMostGeneralBytes)), dialect, layout);
    if (fault != HeaderFault::kNone) return fault;
    EXPECT_EQ(layout.bytes(), static_cast<std::int64_t>(bytes.size()));
    return header.parse(layout, span.first(static_cast<std::size_t>(layout.bytes())));
}

// The published bytes of a land system's record of 2003, with the values that its maker states.
TEST(SegdHeaders, OfARealRecord) {
    const std::string first = hex(
        "0001 8058 000000000003 03 2126 113835"  // file 1, format, 2003, 2 blocks, day 126, time
        "13 0000 000000 10 00 00 8fff 01 16 00 32 32"  // 1 ms; 16 sets, 32 and 32 blocks
        "000001 0000 0000 0000 00 0100 0000 000fa0 00 02 00 0000 00000000000000000000"  // 4000 ms
        "000001 000001 0000 000001 0000 09 00 00 0000 03 01 000000000000000000000000"
        "01 01 0000 07d0 6db7 0006 10 03 0412 0370 0003 0006 0000 0000 0000 0000 07 01 00 01");
    ASSERT_EQ(first.size(), 128u);
    RecordHeader header;
    ASSERT_EQ(parse(first + zeros(15 * 32 + 64 * 32), header), HeaderFault::kNone);
    const GeneralHeader1& general = header.general();
    EXPECT_EQ(header.file_number(), 1);
    EXPECT_EQ(general.format, 8058);
    EXPECT_EQ(general.year, 3);
    EXPECT_EQ(general.day, 126);
    EXPECT_EQ(general.hour * 10000 + general.minute * 100 + general.second, 113835);
    EXPECT_EQ(general.manufacturer, 13);
    EXPECT_EQ(general.additional_blocks, 2);
    EXPECT_EQ(general.record_type, 8);
    EXPECT_EQ(header.revision(), 1.0);
    EXPECT_EQ(header.base_interval_ms(), 1.0);
    EXPECT_EQ(header.record_length_ms(), 4000);
    EXPECT_EQ(header.layout().extended_blocks, 32);
    EXPECT_EQ(header.layout().external_blocks, 32);
    EXPECT_EQ(header.trailer_blocks(), 0);
    ASSERT_EQ(header.sources().size(), 1u);
    EXPECT_EQ(header.sources()[0].source_line, 1);
    EXPECT_EQ(header.sources()[0].source_point, 1);
    EXPECT_EQ(header.sources()[0].source_index, 9);
    ASSERT_EQ(header.sets().size(), 16u);
    EXPECT_EQ(header.traces(), 6);
    const ChannelSet& set = header.sets()[0];
    EXPECT_NEAR(set.descale, 6.742086616486083e-05, 1e-18);  // 2 to the power -13.8564453125
    EXPECT_EQ(set.start_ms, 0);
    EXPECT_EQ(set.end_ms, 4000);
    EXPECT_EQ(set.type, 1);
    EXPECT_EQ(set.alias_hz, 412);
    EXPECT_EQ(set.alias_slope, 370);
    EXPECT_EQ(set.low_cut_hz, 3);
    EXPECT_EQ(set.low_cut_slope, 6);
    EXPECT_EQ(set.extensions, 7);
    EXPECT_EQ(header.intervals(set), 4000);
    EXPECT_EQ(header.sample_interval(set).internal(), 64000);
    EXPECT_EQ(header.extended().size(), 1024u);
}

// One change to a sound header each: bytes at an offset, and what comes of it.
TEST(SegdHeaders, FaultsAreTold) {
    struct Change {
        std::size_t offset;
        const char* bytes;
        HeaderFault fault;
    };
    const Change kChanges[] = {
        {0, "0012", HeaderFault::kNone},
        {0, "00A2", HeaderFault::kGeneralHeader},  // file number
        {2, "0015", HeaderFault::kFormat},         // multiplexed
        {2, "8024", HeaderFault::kFormat},
        {10, "F4", HeaderFault::kGeneralHeader},  // year
        {13, "1A", HeaderFault::kGeneralHeader},  // hour
        {22, "00", HeaderFault::kGeneralHeader},  // base scan interval
        {25, "8A", HeaderFault::kGeneralHeader},  // record length
        {27, "00", HeaderFault::kGeneralHeader},  // scan types
        {28, "FE", HeaderFault::kGeneralHeader},  // channel sets
        {28, "00", HeaderFault::kChannelSet},     // none
        {42, "03", HeaderFault::kRevision3},      // general header 2: revision
        {96, "0B", HeaderFault::kChannelSet},     // scan type
        {104, "00A0", HeaderFault::kChannelSet},  // channels
        {104, "0000", HeaderFault::kChannelSet},  // none in any set
        {107, "A3", HeaderFault::kChannelSet},    // sub-scans
        {108, "FFFF", HeaderFault::kNone},        // a filter that says nothing
    };
    for (const Change& change : kChanges) {
        std::string bytes = RecordParts{}.header();
        const std::string changed = hex(change.bytes);
        bytes.replace(change.offset, changed.size(), changed);
        HeaderLayout layout;
        RecordHeader header;
        const auto span = std::as_bytes(std::span(bytes));
        HeaderFault fault = HeaderLayout::parse(span, Dialect::kOther, layout);
        if (fault == HeaderFault::kNone) fault = header.parse(layout, span);
        EXPECT_EQ(fault, change.fault) << change.offset << ": " << change.bytes;
    }
}

TEST(SegdHeaders, CountsThatDoNotFitComeFromTheSecondBlock) {
    std::string bytes = RecordParts{.trailers = 3, .sets = {{1, 1, 8}, {2, 1, 8}}}.header();
    bytes.replace(0, 2, hex("FFFF"));
    bytes.replace(28, 4, hex("FF 00 FF FF"));            // sets, skew, extended, external
    bytes.replace(32, 9, hex("01E240 0002 0001 0102"));  // file 123456; 2, 1 and 258 blocks
    RecordHeader header;
    ASSERT_EQ(parse(bytes + zeros(259 * 32), header), HeaderFault::kNone);
    EXPECT_EQ(header.file_number(), 123456);
    EXPECT_EQ(header.sets().size(), 2u);
    EXPECT_EQ(header.extended().size(), 32u);
    EXPECT_EQ(header.external().size(), 258u * 32);
    EXPECT_EQ(header.trailer_blocks(), 3);

    // A node maker's revision 1.6 counts external blocks in three bytes: 0x000102.
    bytes.replace(16, 1, hex("20"));
    bytes.replace(39, 5, hex("000102 0106"));
    ASSERT_EQ(parse(bytes + zeros(259 * 32), header), HeaderFault::kNone);
    EXPECT_EQ(header.external().size(), 258u * 32);
    EXPECT_DOUBLE_EQ(header.revision(), 1.6);

    // 65,535 channel sets are a header of 2 MB.
    bytes.replace(35, 2, hex("FFFF"));
    HeaderLayout layout;
    ASSERT_EQ(HeaderLayout::parse(std::as_bytes(std::span(bytes)), Dialect::kOther, layout),
              HeaderFault::kNone);
    EXPECT_EQ(layout.bytes(), 32 * (3 + 65535 + 1 + 258));
}

// Revision 0: further blocks are the maker's own, MP has a high byte alone, nothing is escaped.
TEST(SegdHeaders, RevisionZero) {
    RecordParts parts{.sets = {{1, 1, 8, hex("B783")}}};
    std::string bytes = parts.header();
    bytes.replace(26, 1, hex("10"));  // record length 010: 1024 ms
    bytes.replace(25, 1, hex("80"));
    bytes.replace(50, 1, hex("07"));  // no block number 2
    RecordHeader header;
    ASSERT_EQ(parse(bytes, header), HeaderFault::kNone);
    EXPECT_EQ(header.revision(), 0.0);
    EXPECT_EQ(header.record_length_ms(), 1024);
    EXPECT_TRUE(header.sources().empty());
    EXPECT_NEAR(header.sets()[0].descale, 0.5946035575, 1e-10);
    bytes.replace(50, 1, hex("02"));
    EXPECT_EQ(parse(bytes, header), HeaderFault::kNone);
    EXPECT_EQ(header.revision(), 1.0);
    ASSERT_EQ(parse(bytes, header, Dialect::kSercel368), HeaderFault::kNone);
    EXPECT_EQ(header.revision(), 0.0);
    bytes.replace(28, 1, hex("FF"));
    EXPECT_EQ(parse(bytes, header, Dialect::kSercel368), HeaderFault::kGeneralHeader);
}

TEST(SegdHeaders, IntervalsFollowTimesSubScansAndRecordLength) {
    RecordParts parts{.sets = {{1, 1, 8}, {2, 1, 8, hex("0000"), 9, 2}, {3, 1, 0}}};
    RecordHeader header;
    ASSERT_EQ(parse(parts.header(), header), HeaderFault::kNone);
    EXPECT_EQ(header.intervals(header.sets()[0]), 4);
    EXPECT_EQ(header.intervals(header.sets()[1]), 16);  // four samples in each scan
    EXPECT_EQ(header.sample_interval(header.sets()[1]).internal(), 32000);
    EXPECT_EQ(header.intervals(header.sets()[2]), 4);  // no times: the record's 8 ms
}

TEST(SegdHeaders, TraceHeaderAndReceiver) {
    const std::string plain = hex("0012 01 03 0456 000000 02 00 00 000000 0000 000000");
    const auto parse_trace = [](const std::string& bytes, bool revision_0) {
        return TraceHeader::parse(std::as_bytes(std::span(bytes)).first<20>(), revision_0);
    };
    const auto header = parse_trace(plain, false);
    ASSERT_TRUE(header);
    EXPECT_EQ(header->file_number, 12);
    EXPECT_EQ(header->channel_set, 3);
    EXPECT_EQ(header->trace_number, 456);
    EXPECT_EQ(header->extensions, 2);
    EXPECT_EQ(parse_trace(plain, true)->extensions, 0);
    const std::string escaped = hex("FFFF 01 FF 0001 000000 00 00 00 000000 0100 01E240");
    EXPECT_EQ(parse_trace(escaped, false)->file_number, 123456);
    EXPECT_EQ(parse_trace(escaped, false)->channel_set, 256);
    EXPECT_FALSE(parse_trace(escaped, true));

    const auto receiver = TraceHeaderExtension1::parse(
        block_of(hex("FFFFFF 800001 FF 000FA1 00000A 8000 000014 4000 03") + zeros(11)));
    EXPECT_EQ(receiver.receiver_line, 10.5);
    EXPECT_EQ(receiver.receiver_point, -8388607);
    EXPECT_EQ(receiver.receiver_index, -1);
    EXPECT_EQ(receiver.samples, 4001);
    EXPECT_EQ(receiver.sensor, 3);
}

}  // namespace
}  // namespace halvern::segd
