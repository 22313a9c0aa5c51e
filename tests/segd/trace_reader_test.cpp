#include "segd/trace_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "segd/record_bytes.h"
#include "support/log_capture.h"

namespace halvern::segd {
namespace {

using namespace testing_support;
using Met = TraceReader::Met;
using Record = RecordReader::Record;
using testing::ElementsAre;

struct Read {
    std::vector<std::vector<float>> traces;
    std::vector<std::string> remarks;
    std::int64_t samples = 0;
};
Read read(std::vector<std::string> blocks, TraceReaderOptions options = {}) {
    options.header_path = HALVERN_SOURCE_DIR "/header/default";
    const LogCapture quiet;
    TraceReader reader;
    EXPECT_TRUE(reader.load(options));
    ListSource source(std::move(blocks));
    EXPECT_EQ(reader.open(source), Record::kRecord);
    Read read{.samples = reader.trace_samples()};
    for (Met met; (met = reader.next()) != Met::kEnd && met != Met::kNoWayOn;) {
        if (met != Met::kTrace) continue;
        const std::span<const float> floats = reader.samples().floats(reader.definition());
        read.traces.emplace_back(floats.begin(), floats.end());
    }
    read.remarks = reader.remarks();
    return read;
}

// By hand: 1, -2, 0.5, 0.25 and 0 in each format's own bytes, as far as it holds them, times 2;
// what no float can hold is 0, here 16 to the power 63, NaN and infinity.
TEST(TraceReader, DecodesTimesDescale) {
    const struct {
        int format;
        const char* bytes;
        std::vector<float> expected;
        std::size_t bad;
    } kCases[] = {
        {8015, "1200 4000 C000 4000 2000 0000 0000 0000 0000 0000", {2, -4, 1, 0.5f, 0}, 0},
        {8036, "400000 800000 200000 100000 000000", {0.5f, -1, 0.25f, 0.125f, 0}, 0},
        {8048, "41100000 C1200000 40800000 40400000 FFFFFFFF", {2, -4, 1, 0.5f, 0}, 0},
        {8058, "3F800000 C0000000 3F000000 3E800000 00000000", {2, -4, 1, 0.5f, 0}, 0},
        {8058,
         "FFFFFFFF 7F800000 7F7FFFFF C0490FDB 3F800000",
         {0, 0, 0, -6.2831854820251465f, 2},
         3}};
    for (const auto& [format, bytes, expected, bad] : kCases) {
        SCOPED_TRACE(bytes);
        const RecordParts parts{.format = format, .sets = {{1, 1, 8, hex("0004")}}};
        const Read got = read({parts.header(), parts.trace(1, 1, hex(bytes)), ""});
        EXPECT_THAT(got.traces, ElementsAre(expected));
        if (bad == 0) {
            EXPECT_TRUE(got.remarks.empty());
        } else {
            EXPECT_THAT(got.remarks, ElementsAre("1 traces hold 3 samples that are no numbers or "
                                                 "too large for one: they became 0"));
        }
    }
}

// The times say 5 samples. The traces of the line's set have 7, by their first extension or by the
// length of their block, wherever those of another set come.
TEST(TraceReader, TheLineHasAsManySamplesAsItsOwnSetsFirstTrace) {
    const RecordParts parts{.sets = {{1, 2, 4, hex("0000"), 9}, {2, 1, 8}}};
    const std::string data = "seven samples of four bytes.";
    const auto tape = [&](std::size_t samples, int extensions, int claimed) {
        return std::vector<std::string>{
            parts.header(), parts.trace(1, 1, zeros(12)), parts.trace(1, 2, zeros(12)),
            parts.trace(2, 1, data.substr(0, samples * 4), extensions, claimed), ""};
    };
    for (const bool blocked : {false, true}) {
        SCOPED_TRACE(blocked);
        EXPECT_EQ(read(tape(7, 1, 7), {.blocked = blocked}).samples, 7);
        EXPECT_EQ(read(tape(7, 0, 0), {.blocked = blocked}).samples, 7);
        EXPECT_EQ(read(tape(5, 0, 0), {.blocked = blocked}).samples, 5);
    }
    EXPECT_EQ(read(tape(7, 1, 7)).traces.at(2).size(), 7u);
    EXPECT_EQ(read({parts.header(), kLostBlock, ""}).samples, 5);
    // Nobody can stop what is read ahead: it does not go on for ever.
    std::vector<std::string> lost(1000, kLostBlock);
    lost.insert(lost.begin(), parts.header());
    ListSource source(lost);
    TraceReader reader;
    const LogCapture quiet;
    ASSERT_TRUE(reader.load({.header_path = HALVERN_SOURCE_DIR "/header/default"}));
    EXPECT_EQ(reader.open(source), Record::kRecord);
    EXPECT_GT(source.left(), 800u);
}

// 100 samples of 4 bytes and a header of 20: a trace begins in one block and ends in another.
TEST(TraceReader, ATapeCutIntoSmallBlocksIsFoundOut) {
    const RecordParts parts{.sets = {{1, 3, 198}}};
    std::string traces;
    for (int number = 1; number <= 3; ++number) traces += parts.trace(1, number, zeros(400));
    std::vector<std::string> blocks = {parts.header()};
    for (std::size_t at = 0; at < traces.size(); at += 256)
        blocks.push_back(traces.substr(at, 256));
    const Read got = read(blocks);
    EXPECT_EQ(got.traces.size(), 3u);
    EXPECT_THAT(got.remarks, testing::IsEmpty());
}

}  // namespace
}  // namespace halvern::segd
