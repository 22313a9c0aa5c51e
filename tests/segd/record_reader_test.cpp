#include "segd/record_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "segd/image_files.h"
#include "segd/record_bytes.h"
#include "support/temporary_folder.h"

namespace halvern::segd {
namespace {

using namespace testing_support;
using Record = RecordReader::Record;
using Next = RecordReader::Next;

// What a source gives: "[file" a record, ":set/trace=samples" a trace (with "/there" when fewer are
// there), "h" "t" "e" a bad header, bad trace and read error, "]" the end of a record, "?fault" one
// that cannot be used, "R" a header that cannot be read, "." the end; "+bytes" is left over.
std::string contents(BlockSource& source, bool blocked, Dialect dialect = Dialect::kOther) {
    RecordReader reader(source, dialect, blocked);
    std::string text;
    for (int guard = 0; guard < 100; ++guard) {
        const Record record = reader.next_record();
        if (record == Record::kEnd) return text + ".";
        if (record != Record::kRecord) {
            text += record == Record::kReadError
                        ? "R"
                        : "?" + std::to_string(static_cast<int>(reader.fault()));
            if (reader.skip_file() != 0) return text + "!";
            continue;
        }
        text += "[" + std::to_string(reader.header().file_number());
        for (Next next; (next = reader.next_trace()) != Next::kEndOfRecord;) {
            if (next != Next::kTrace) {
                text += next == Next::kBadHeader ? "h" : next == Next::kBadTrace ? "t" : "e";
                continue;
            }
            const Trace& trace = reader.trace();
            text += ":" + std::to_string(trace.set->number) + "/" +
                    std::to_string(trace.header.trace_number) + "=" + std::to_string(trace.samples);
            const std::int64_t there =
                samples_in(reader.header().format(), static_cast<std::int64_t>(trace.raw.size()));
            if (there < trace.samples) text += "/" + std::to_string(there);
        }
        text += "]";
        if (reader.left_over() > 0) text += "+" + std::to_string(reader.left_over());
    }
    return text + " and no end";
}
std::string of_tape(std::vector<std::string> blocks, bool blocked = false,
                    Dialect dialect = Dialect::kOther) {
    ListSource source(std::move(blocks));
    return contents(source, blocked, dialect);
}
// The same bytes in blocks of `size`, as a blocked tape or (marks: false) as a disk file.
std::string in_pieces(const std::string& bytes, std::size_t size, bool marks = true) {
    std::vector<std::string> blocks;
    for (std::size_t i = 0; i < bytes.size(); i += size) blocks.push_back(bytes.substr(i, size));
    ListSource source(std::move(blocks), marks);
    return contents(source, true);
}

const std::string k5 = zeros(20);  // five samples of four bytes: 8 ms at 2 ms, both ends counted

struct FormatCase {
    int format;
    std::string five;  // five samples
};
class EveryFormat : public testing::TestWithParam<FormatCase> {};

// Two sets of different length and type, two extensions a trace, an extended header, a trailer: the
// samples come back, whatever the blocks.
TEST_P(EveryFormat, ComesBackFromBlocksBlockedTapesAndDiskFiles) {
    const auto& [format, five] = GetParam();
    RecordParts parts{.file = 427,
                      .format = format,
                      .trailers = 1,
                      .extra_header = zeros(64),
                      .sets = {{1, 1, 16, hex("0004"), 9}, {2, 2, 8, hex("0004")}}};
    const std::string nine =
        zeros(static_cast<std::size_t>(bytes_of(*sample_format_of(format), 9)));
    const std::vector<std::string> blocks = {parts.header(),
                                             parts.trace(1, 1, nine, 2, 9),
                                             parts.trace(2, 1, five, 2, 5),
                                             parts.trace(2, 2, five, 2, 0),
                                             zeros(32),
                                             ""};
    const std::string expected = "[427:1/1=9:2/1=5:2/2=5].";
    EXPECT_EQ(of_tape(blocks), expected);
    EXPECT_EQ(of_tape(blocks, true), expected);
    std::string whole;
    for (const std::string& block : blocks) whole += block;
    for (const std::size_t size : {7u, 100u, 512u, 100'000u}) {
        EXPECT_EQ(in_pieces(whole, size), expected) << size;
        EXPECT_EQ(in_pieces(whole, size, false), expected) << size;
    }

    ListSource source(blocks);
    RecordReader reader(source, Dialect::kOther, false);
    ASSERT_EQ(reader.next_record(), Record::kRecord);
    EXPECT_EQ(reader.header().sources()[0].source_line, 10.5);
    EXPECT_EQ(reader.header().sources()[0].source_point, 20.25);
    ASSERT_EQ(reader.next_trace(), Next::kTrace);
    EXPECT_EQ(reader.trace().set->type, 9);
    ASSERT_EQ(reader.next_trace(), Next::kTrace);
    EXPECT_EQ(reader.trace().sequence, 2);
    EXPECT_EQ(reader.trace().receiver->receiver_line, 7);
    EXPECT_EQ(reader.trace().receiver->receiver_point, -2);
    EXPECT_EQ(reader.trace().receiver->receiver_index, 3);
}

INSTANTIATE_TEST_SUITE_P(
    Segd, EveryFormat,
    testing::Values(FormatCase{8015, hex("1200 4000 C000 4000 2000 0000 0000 0000 0000 0000")},
                    FormatCase{8036, hex("400000 800000 200000 100000 000000")},
                    FormatCase{8048, hex("41100000 C1200000 40800000 40400000 00000000")},
                    FormatCase{8058, hex("3F800000 C0000000 3F000000 3E800000 00000000")}),
    [](const auto& format) { return "Format" + std::to_string(format.param.format); });

TEST(RecordReader, TapesWithLabelsMissingAndDoubledFilemarks) {
    const RecordParts a{.file = 1}, b{.file = 2};
    const std::string label = "   1SD2.1RECORD" + std::string(113, ' ');
    const std::vector<std::string> one = {a.header(), a.trace(1, 1, k5), a.trace(1, 2, k5)};
    const std::vector<std::string> two = {b.header(), b.trace(1, 1, k5), b.trace(1, 2, k5)};
    const auto tape = [](std::initializer_list<std::vector<std::string>> parts) {
        std::vector<std::string> blocks;
        for (const auto& part : parts) blocks.insert(blocks.end(), part.begin(), part.end());
        return blocks;
    };
    const std::vector<std::string> mark = {""};
    const std::string both = "[1:1/1=5:1/2=5][2:1/1=5:1/2=5].";
    for (const bool blocked : {false, true}) {
        SCOPED_TRACE(blocked);
        EXPECT_EQ(of_tape({}, blocked), ".");
        EXPECT_EQ(of_tape(tape({one, mark, two, mark, mark}), blocked), both);
        EXPECT_EQ(of_tape(tape({{label}, one, mark, two}), blocked), both);
        EXPECT_EQ(of_tape(tape({{label}, mark, one, mark, two}), blocked), both);
        EXPECT_EQ(of_tape(tape({one, two, mark}), blocked), both);  // a filemark is missing
        EXPECT_EQ(of_tape(tape({one, mark, mark, two}), blocked), "[1:1/1=5:1/2=5].");
        // A header that makes no sense is one file's loss.
        EXPECT_EQ(of_tape(tape({{"nonsense"}, mark, two}), blocked), "?1[2:1/1=5:1/2=5].");
        EXPECT_EQ(of_tape(tape({{kLostBlock}, one, mark, two}), blocked), "R[2:1/1=5:1/2=5].");
    }
    // Blocked tapes: filled up, with what is neither trace nor filler, and one that was said not to
    // be blocked.
    const std::string block = one[0] + one[1] + one[2];
    const std::string next = two[0] + two[1] + two[2];
    EXPECT_EQ(of_tape({block + zeros(40), next + zeros(9), ""}, true), both);
    EXPECT_EQ(of_tape({block + "padding", "trailer", next, ""}, true),
              "[1:1/1=5:1/2=5]+14[2:1/1=5:1/2=5].");
    EXPECT_EQ(of_tape({one[0] + one[1] + one[2], "", two[0] + two[1], two[2], ""}), both);
}

TEST(RecordReader, RecordsThatAreNotAsAnnounced) {
    const RecordParts parts{.file = 3};
    const std::string head = parts.header();
    const auto trace = [&](int number) { return parts.trace(1, number, k5); };
    RecordParts other{.file = 4};
    EXPECT_EQ(of_tape({head, trace(1), ""}), "[3:1/1=5].");  // fewer
    EXPECT_EQ(of_tape({head, trace(1), trace(2), trace(3), ""}), "[3:1/1=5:1/2=5:1/3=5].");
    EXPECT_EQ(of_tape({head, trace(1), trace(2), "trailer", ""}), "[3:1/1=5:1/2=5].");
    EXPECT_EQ(of_tape({head, other.trace(1, 1, k5), trace(2), ""}), "[3:1/1=5:1/2=5].");
    EXPECT_EQ(of_tape({head, parts.trace(9, 1, k5), trace(2), ""}), "[3:1/1=5:1/2=5].");
    EXPECT_EQ(of_tape({head, "short", trace(2), ""}), "[3h:1/2=5].");
    EXPECT_EQ(of_tape({head, trace(1).substr(0, 20), trace(2), ""}), "[3t:1/2=5].");
    EXPECT_EQ(of_tape({head, kLostBlock, trace(2), ""}), "[3e:1/2=5].");
    EXPECT_EQ(of_tape({head, trace(1) + zeros(3), trace(2), ""}), "[3:1/1=5:1/2=5].");
    EXPECT_EQ(of_tape({head, hex("0003 01 01 0001") + zeros(3) + "\xFF" + zeros(30), trace(2)}),
              "[3h:1/2=5].")
        << "255 extensions in a block of 40 bytes";

    // In a stream the next tape block is where reading goes on.
    EXPECT_EQ(of_tape({head + trace(1) + "padding", trace(2), ""}, true), "[3:1/1=5:1/2=5]+7.");
    EXPECT_EQ(of_tape({head + trace(1).substr(0, 30), kLostBlock, trace(2), ""}, true),
              "[3te:1/2=5].");
    EXPECT_EQ(in_pieces(head + trace(1) + trace(2).substr(0, 28), 50, false), "[3:1/1=5:1/2=5/2].");
    EXPECT_EQ(in_pieces(head + "not a trace, and nothing else", 50, false), "[3]+29.");

    // Some recorders escape the file number of every trace and leave the extended one 0, or not.
    for (const char* extended : {"000000", "00004D"}) {
        std::string bytes = head;
        for (const int number : {1, 2}) {
            bytes += trace(number).replace(0, 2, hex("FFFF")).replace(17, 3, hex(extended));
        }
        EXPECT_EQ(in_pieces(bytes, 50, false), "[3:1/1=5:1/2=5].");
    }
}

// Field systems have habits of their own: what a tape with a block a trace gives, a packed one and
// a disk file give, too. Bytes: scan type at 2, channel set at 3, trace number at 4.
TEST(RecordReader, TraceHeadersWithHabitsReadAlikeHoweverTheyArePacked) {
    const RecordParts parts{.file = 6, .sets = {{1, 2, 8}, {2, 3, 8}}};
    const struct {
        const char* habit;
        RecordParts named;                 // by the trace headers
        std::vector<std::string> numbers;  // set and number
        const char* expected;
    } kCases[] = {{"another file number",
                   {.file = 77},
                   {"010001", "010002", "020001", "020002", "020003"},
                   "[6:1/1=5:1/2=5:2/1=5:2/2=5:2/3=5]."},
                  {"set 0",
                   {.file = 6},
                   {"000001", "000002", "000001", "000002", "000003"},
                   "[6:1/1=5:1/2=5:2/1=5:2/2=5:2/3=5]."},
                  {"running numbers",
                   {.file = 6},
                   {"010001", "010002", "020003", "020004", "020005"},
                   "[6:1/1=5:1/2=5:2/3=5:2/4=5:2/5=5]."},
                  {"all of these",
                   {.file = 77},
                   {"000001", "000002", "000003", "000004", "000005"},
                   "[6:1/1=5:1/2=5:2/3=5:2/4=5:2/5=5]."}};
    for (const auto& [habit, named, numbers, expected] : kCases) {
        SCOPED_TRACE(habit);
        std::vector<std::string> blocks = {parts.header()};
        for (const std::string& number : numbers) {
            blocks.push_back(named.trace(1, 1, k5).replace(3, 3, hex(number)));
        }
        std::string whole;
        for (const std::string& block : blocks) whole += block;
        EXPECT_EQ(of_tape(blocks), expected);
        EXPECT_EQ(of_tape(blocks, true), expected);
        EXPECT_EQ(in_pieces(whole, 70), expected);
        EXPECT_EQ(in_pieces(whole, 70, false), expected);
        // A tape that is packed, and was said not to be.
        EXPECT_EQ(of_tape({blocks[0], whole.substr(blocks[0].size())}).substr(0, 7), "[6:1/1=");
    }
}

TEST(RecordReader, FillerInAPackedRecordIsNoTrace) {
    const RecordParts parts{.file = 6, .sets = {{1, 4, 8}}};
    const auto trace = [&](int number) { return parts.trace(1, number, k5); };
    const std::string all = "[6:1/1=5:1/2=5:1/3=5:1/4=5]";
    for (const std::string& filler :
         {zeros(50), std::string(33, ' '), parts.trace(1, 0, zeros(9)), std::string("neither")}) {
        const std::string left =
            filler == zeros(50) || filler[0] == ' ' ? "" : "+" + std::to_string(filler.size());
        EXPECT_EQ(
            of_tape({parts.header() + trace(1) + trace(2) + filler, trace(3) + trace(4), ""}, true),
            all + left + ".");
        EXPECT_EQ(
            of_tape({parts.header() + trace(1) + filler + trace(2), trace(3) + trace(4), ""}, true),
            all + left + ".");
    }
    // Traces that are gone show in the numbers of those that follow.
    EXPECT_EQ(of_tape({parts.header() + trace(1), kLostBlock, trace(4), ""}, true),
              "[6:1/1=5e:1/4=5].");
    EXPECT_EQ(of_tape({parts.header() + trace(1) + "junk", trace(3) + trace(4), ""}, true),
              "[6:1/1=5h:1/3=5:1/4=5]+4.");
}

// A header in a block of its own, then traces packed or cut anywhere.
TEST(RecordReader, APackedTapeIsFoundOutWhereverItBegins) {
    const RecordParts parts{.file = 6, .sets = {{1, 4, 8}}};
    std::string traces;
    for (int number = 1; number <= 4; ++number) traces += parts.trace(1, number, k5);
    EXPECT_EQ(of_tape({parts.header(), traces, ""}), "[6:1/1=5:1/2=5:1/3=5:1/4=5].");
    EXPECT_EQ(of_tape({parts.header(), traces.substr(0, 70), traces.substr(70), ""}),
              "[6:1/1=5:1/2=5:1/3=5:1/4=5].");
}

TEST(RecordReader, SampleCountIsTheOneThatFits) {
    const RecordParts parts{.file = 5, .sets = {{1, 3, 8}}};
    const auto record = [&](std::size_t bytes, int extensions, int claimed) {
        std::vector<std::string> blocks = {parts.header()};
        for (int i = 1; i <= 3; ++i) {
            blocks.push_back(parts.trace(1, i, zeros(bytes), extensions, claimed));
        }
        return blocks;
    };
    const auto stream = [](const std::vector<std::string>& blocks) {
        std::string bytes;
        for (const std::string& block : blocks) bytes += block;
        return in_pieces(bytes, 1000, false);
    };
    const auto three = [](const std::string& count) {
        return "[5:1/1=" + count + ":1/2=" + count + ":1/3=" + count + "].";
    };
    // The times say 4 intervals; some recorders count one end, some both.
    EXPECT_EQ(stream(record(20, 0, 0)), three("5"));
    EXPECT_EQ(stream(record(16, 0, 0)), three("4"));
    EXPECT_EQ(stream(record(12, 1, 3)), three("3"));         // the extension's own count
    EXPECT_EQ(stream(record(20, 1, 0xFFFFFF)), three("5"));  // which cannot be
    EXPECT_EQ(of_tape(record(12, 1, 3)), three("3"));
    EXPECT_EQ(of_tape(record(24, 1, 5)), three("5"));         // padded
    EXPECT_EQ(of_tape(record(12, 1, 5)), three("5/3"));       // cut short
    EXPECT_EQ(of_tape(record(12, 1, 0xFFFFFF)), three("3"));  // cannot be
    EXPECT_EQ(of_tape(record(28, 0, 0)), three("7"));         // the block's length
}

TEST(RecordReader, SplitsDiskFilesIntoTapeBlocks) {
    const TemporaryFolder folder;
    const RecordParts parts{.file = 6, .format = 8015, .trailers = 1};
    const std::vector<std::string> expected = {"   1SD2.0RECORD" + std::string(113, ' '),
                                               parts.header(), parts.trace(1, 1, zeros(20), 1, 5),
                                               parts.trace(1, 2, zeros(20), 1, 5), zeros(32)};
    std::string whole;
    for (const std::string& block : expected) whole += block;
    std::vector<std::string> blocks;
    const auto keep = [&](std::span<const std::byte> block) {
        blocks.emplace_back(reinterpret_cast<const char*>(block.data()), block.size());
        return 0;
    };
    const std::string path = folder.write("whole.segd", whole);
    EXPECT_EQ(split_records(path, Dialect::kOther, keep), "");
    EXPECT_EQ(blocks, expected);
    EXPECT_EQ(split_records(folder.write("more.segd", whole + "more"), Dialect::kOther, keep),
              "'" + folder.file("more.segd") + "' has 4 bytes that are no trace");
    EXPECT_EQ(split_records(folder.write("cut.segd", whole.substr(0, whole.size() - 46)),
                            Dialect::kOther, keep),
              "'" + folder.file("cut.segd") + "' ends within trace 2 of file number 6");
    // Cut anywhere it is split as far as it is whole, and never read beyond its end.
    for (std::size_t length = 0; length < whole.size(); ++length) {
        blocks.clear();
        (void)split_records(folder.write("cut.segd", whole.substr(0, length)), Dialect::kOther,
                            keep);
        std::string joined;
        for (const std::string& block : blocks) joined += block;
        EXPECT_EQ(whole.compare(0, joined.size(), joined), 0) << length;
    }
}

}  // namespace
}  // namespace halvern::segd
