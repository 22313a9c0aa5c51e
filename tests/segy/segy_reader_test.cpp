#include "segy/segy_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <filesystem>
#include <fstream>

#include "segy/segy_bytes.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint32_t kOne = 0x3F800000, kTwo = 0x40000000;  // IEEE 1.0 and 2.0

class SegyReaderTest : public testing::Test {
protected:
    SegyOpening open(const std::string& bytes, int progress = 0) {
        return open_path(folder_.write("line.sgy", bytes), progress);
    }
    SegyOpening open_path(const std::string& path, int progress = 0) {
        return reader_.open(
            path,
            {.header_path = definition_, .progress_interval = progress, .report = &kTestReport});
    }
    std::vector<float> floats() {
        const std::span<float> samples = reader_.samples().floats(reader_.definition());
        return {samples.begin(), samples.end()};
    }
    double word(const char* name) {
        return reader_.definition().get_double(reader_.definition().find(name));
    }

    TemporaryFolder folder_;
    std::string definition_ = HALVERN_SOURCE_DIR "/header/default";
    LogCapture log_;
    SegyReader reader_;
};

std::string trace_of(int ffid, const std::vector<std::uint32_t>& words = {kOne, kTwo, 0, 0}) {
    return record_bytes({{8, 4, ffid}}, 4, words);
}

TEST_F(SegyReaderTest, StatisticsStandInTheLogLineByLine) {
    // 2 ms, 3 samples of 2 bytes, 1500 in the field; 2 records of 246 bytes.
    const std::string path = folder_.write(
        "a.sgy",
        header_bytes({.interval_us = 2000, .samples = 3, .field_samples = 1500, .code = 3}) +
            std::string(2 * 246, '\0'));
    ASSERT_EQ(open_path(path), SegyOpening::kOpened);
    EXPECT_EQ(log_.text(), "SEG-Y File '" + path +
                               "' Statistics:\n"
                               "  Actual Number of Samples:   3\n"
                               "  Real   Number of Samples:   1500\n"
                               "  Sample Rate:                2.0\n"
                               "  Data Format:                16-BIT INTEGER\n"
                               "  Number of Traces:           2\n"
                               "  File Size:                  4092\n");
}

struct Format {
    int code;
    int width;
    std::vector<std::uint32_t> words;
    int weight;
    std::vector<float> expected;
    const char* log;
};

// By hand. IBM: 0x64 / 256 * 16^2 = 100, 0x10 / 256 * 16 = 1, 0x80 / 256 = 0.5.
// 16 bits with WEIGHT 3: 0x0400 = 1024, times 1/8 = 128; 0xFFF8 = -8, -1.
TEST_F(SegyReaderTest, FormatsDecode) {
    const Format formats[] = {
        {1, 4, {0x42640000, 0xC1100000, 0x40800000}, 0, {100, -1, .5f}, "IBM FLOAT"},
        {3, 2, {0x0400, 0xFFF8, 0x0001}, 3, {128, -1, .125f}, "16-BIT INTEGER"},
        {5, 4, {kOne, 0xC0000000, 0}, 0, {1, -2, 0}, "IEEE FLOAT"},
        {8, 4, {kOne, 0xC0000000, 0}, 0, {1, -2, 0}, "is 8; 1, 3 and 5 are known"},
    };
    for (const Format& format : formats) {
        SCOPED_TRACE(testing::Message() << "format code " << format.code);
        ASSERT_EQ(open(header_bytes({.samples = 3, .code = format.code}) +
                       record_bytes({{168, 2, format.weight}}, format.width, format.words)),
                  SegyOpening::kOpened);
        ASSERT_EQ(reader_.read_next(), 1);
        EXPECT_EQ(floats(), format.expected);
        EXPECT_THAT(log_.text(), HasSubstr(format.log));
        EXPECT_EQ(reader_.read_next(), 0);
    }
}

TEST_F(SegyReaderTest, RefusesHeadersThatMakeNoSenseAndSaysWhy) {
    const HeaderFields variable{.revision = 0x0100, .text_headers = -1};
    const HeaderFields two{.revision = 0x0100, .text_headers = 2};
    const std::pair<std::string, const char*> files[] = {
        {"", "holds 0 bytes"},
        {header_bytes({}).substr(1), "holds 3599 bytes"},
        {header_bytes({.samples = 40000}), "gives -25536 samples"},
        {header_bytes(variable), "variable number"},
        {header_bytes(two) + std::string(6399, ' '), "ends before the 2 extended text headers"}};
    for (const auto& [bytes, why] : files) {
        EXPECT_EQ(open(bytes), SegyOpening::kNotValid);
        EXPECT_EQ(reader_.read_next(), 0);
        EXPECT_THAT(log_.text(), HasSubstr(why));
    }
    EXPECT_EQ(open_path(folder_.file("nothing")), SegyOpening::kNotValid);
}

TEST_F(SegyReaderTest, EveryPrefixOfAFileReadsItsWholeRecords) {
    const std::string whole = header_bytes({}) + trace_of(1) + trace_of(2) + trace_of(3);
    const std::string path = folder_.write("prefix.sgy", whole);
    for (std::size_t size = whole.size() + 1; size-- > 0;) {
        std::filesystem::resize_file(path, size);
        LogCapture quiet;
        SegyReader reader;
        const SegyOpening opening =
            reader.open(path, {.header_path = definition_, .report = &kTestReport});
        if (size < 3600) {
            ASSERT_EQ(opening, SegyOpening::kNotValid) << size;
            continue;
        }
        ASSERT_EQ(opening, SegyOpening::kOpened) << size;
        const auto traces = static_cast<std::int64_t>((size - 3600) / 256);
        EXPECT_EQ(reader.trace_count(), traces) << size;
        std::int64_t read = 0;
        while (reader.read_next() == 1) ++read;
        EXPECT_EQ(read, traces) << size;
        EXPECT_EQ(quiet.text().find("left over") != std::string::npos, (size - 3600) % 256 != 0);
    }
}

TEST_F(SegyReaderTest, ExtendedTextHeadersAreSteppedOverFromRevision1On) {
    struct Case {
        std::uint32_t revision;
        int stepped_over;
    };
    // Writers put revision 1 as 0100, as 100 and as 1; blanks are no revision.
    for (const auto [revision, stepped_over] :
         {Case{0x0100, 1}, {0x0201, 1}, {100, 1}, {1, 1}, {0, 0}, {0x4040, 0}}) {
        SCOPED_TRACE(revision);
        const SegyOpening opening = open(header_bytes({.revision = revision, .text_headers = 1}) +
                                         std::string(3200, '\x40') + trace_of(77));
        if (!stepped_over) {
            EXPECT_EQ(reader_.refusal().kind, SegyRefusal::Kind::kTextForTraces);
            continue;
        }
        ASSERT_EQ(opening, SegyOpening::kOpened);
        ASSERT_EQ(reader_.read_next(), 1);
        EXPECT_EQ(word("FFID"), 77);
        EXPECT_EQ(reader_.trace_count(), 1);
    }
}

TEST_F(SegyReaderTest, ShortenedTraceKeepsItsStoredSamples) {
    const std::string file =
        header_bytes({}) + record_bytes({{28, 2, 101}, {104, 4, 1}}, 4, {kOne, kTwo, kTwo, kTwo}) +
        record_bytes({{28, 2, 101}, {104, 4, 99}}, 4, {kOne, kTwo, kTwo, kTwo}) +
        record_bytes({{28, 2, 1}, {104, 4, 1}}, 4, {kOne, kTwo, kTwo, kTwo});
    ASSERT_EQ(open(file), SegyOpening::kOpened);
    std::vector<int> stored;
    while (reader_.read_next() == 1) stored.push_back(reader_.samples().stored_count());
    EXPECT_THAT(stored, ElementsAre(1, 4, 4));
    EXPECT_THAT(reader_.remarks(), ElementsAre(HasSubstr("1 traces are marked as shortened")));
    ASSERT_EQ(reader_.read_trace(0), 1);
    EXPECT_THAT(floats(), ElementsAre(1, 0, 0, 0));

    // A description that begins with TRACEID marks no shortened traces.
    const std::string blank(51, ' ');
    definition_ = folder_.write("other", blank + "TRACEID   28 0\n" + blank + "TOTSAMP  104 1\n" +
                                             blank + "STSAMP   110 1\n");
    ASSERT_EQ(open(file), SegyOpening::kOpened);
    ASSERT_EQ(reader_.read_next(), 1);
    EXPECT_EQ(reader_.samples().stored_count(), 4);
}

TEST_F(SegyReaderTest, ATraceThatIsReadAgainComesFresh) {
    ASSERT_EQ(open(header_bytes({}) + trace_of(10) + trace_of(11) + trace_of(12)),
              SegyOpening::kOpened);
    ASSERT_EQ(reader_.read_trace(2), 1);
    EXPECT_EQ(word("FFID"), 12);
    EXPECT_EQ(reader_.read_next(), 0);
    ASSERT_EQ(reader_.read_trace(1), 1);
    reader_.definition().set_double(reader_.definition().find("FFID"), 5);
    floats();
    ASSERT_EQ(reader_.read_trace(1), 1);
    EXPECT_EQ(word("FFID"), 11);
    EXPECT_THAT(floats(), ElementsAre(1, 2, 0, 0));
    EXPECT_EQ(reader_.read_trace(3), 0);
    EXPECT_EQ(reader_.read_trace(-1), 0);
    EXPECT_TRUE(reader_.move_to(3)) << "the end is a place";
    EXPECT_FALSE(reader_.move_to(4));
}

TEST_F(SegyReaderTest, RewritesTheCurrentRecordInPlace) {
    const std::string file = header_bytes({}) + trace_of(10) + trace_of(11);
    for (const bool with_samples : {false, true}) {
        ASSERT_EQ(open(file), SegyOpening::kOpened);
        EXPECT_EQ(reader_.rewrite_current(), -1) << "nothing was read yet";
        reader_.set_samples_wanted(with_samples);
        ASSERT_EQ(reader_.read_trace(0), 1);
        EXPECT_EQ(reader_.samples().stored_count(), with_samples ? 4 : 0);
        reader_.definition().set_double(reader_.definition().find("FFID"), 0x01020304);
        if (with_samples) {
            const std::span<float> samples = reader_.samples().floats(reader_.definition());
            samples[3] = 1;
            reader_.samples().set_floats(samples);
        }
        ASSERT_EQ(reader_.rewrite_current(), 0);
        std::string expected = file;
        put_big_endian(expected, 3600 + 8, 4, 0x01020304);
        if (with_samples) put_big_endian(expected, 3600 + 240 + 3 * 4, 4, kOne);
        EXPECT_EQ(file_bytes(folder_.file("line.sgy")), expected);
        ASSERT_EQ(reader_.read_next(), 1);
        EXPECT_EQ(word("FFID"), 11) << "reading goes on behind the record";
        ASSERT_EQ(reader_.read_trace(0), 1);
        EXPECT_EQ(word("FFID"), 0x01020304) << "and back finds what was written";
    }
}

TEST_F(SegyReaderTest, CountsTracesThatContradictTheBinaryHeaderAndSaysWhereItIs) {
    ASSERT_EQ(
        open(header_bytes({}) + record_bytes({{114, 2, 4}, {116, 2, 4000}}, 4, {0, 0, 0, 0}) +
             record_bytes({}, 4, {0, 0, 0, 0}) + record_bytes({{114, 2, 1500}}, 4, {0, 0, 0, 0}) +
             record_bytes({{116, 2, 2000}}, 4, {0, 0, 0, 0})),
        SegyOpening::kOpened);
    while (reader_.read_next() == 1) continue;
    EXPECT_THAT(reader_.remarks(), ElementsAre(HasSubstr("2 traces")));

    // 40 ms is 40000 us, which only the unsigned field holds: no contradiction.
    ASSERT_EQ(open(header_bytes({.interval_us = 40000}) +
                   record_bytes({{116, 2, 40000}}, 4, {0, 0, 0, 0})),
              SegyOpening::kOpened);
    ASSERT_EQ(reader_.read_next(), 1);
    EXPECT_TRUE(reader_.remarks().empty());
}

// Header bytes with one field changed.
std::string with(std::string bytes, std::size_t offset, int width, std::uint32_t value) {
    put_big_endian(bytes, offset, width, value);
    return bytes;
}

TEST_F(SegyReaderTest, RefusesWhatIsCertainlySomethingElse) {
    using Kind = SegyRefusal::Kind;
    const HeaderFields two{.revision = 0x0200}, two_1{.revision = 0x0201};
    const std::string traces = trace_of(1) + trace_of(2);
    // Small integers are denormal as floats; minus one is NaN.
    const std::string integers = record_bytes({}, 4, {7, 300, 0xFFFFFFFF, 0});
    // Bare traces: 4 samples of 4000 us in a native header, 114 and 116, least byte first.
    const std::string bare = record_bytes({{114, 2, 0x0400}, {116, 2, 0xA00F}}, 4, {1, 2, 3, 4});
    std::string many_bare;
    for (int i = 0; i < 20; ++i) many_bare += bare;
    std::string segd(4096, '\0');
    segd.replace(0, 32,
                 std::string("\x00\x01\x80\x58\0\0\0\0\0\0\x26\x11\x27\x12\x59\x30", 16) +
                     std::string(16, '\x01'));
    std::string sps;
    for (int i = 0; i < 60; ++i) sps += "S" + std::string(78, '1') + "\n";
    const struct {
        const char* name;
        std::string bytes;
        Kind kind;
    } files[] = {
        {"plain", header_bytes({}) + traces, Kind::kNone},
        {"no traces", header_bytes({}), Kind::kNone},
        {"swapped code", header_bytes({.code = 0x0500}) + traces, Kind::kLittleEndian},
        {"order constant", with(header_bytes({}), 3296, 4, 0x04030201) + traces,
         Kind::kLittleEndian},
        {"right order", with(header_bytes({}), 3296, 4, 0x01020304) + traces, Kind::kNone},
        {"pairs", with(header_bytes({}), 3296, 4, 0x02010403) + traces, Kind::kSwappedPairs},
        {"more samples", with(header_bytes(two), 3268, 4, 70000) + traces, Kind::kRevision2Layout},
        {"the same samples", with(header_bytes(two), 3268, 4, 4) + traces, Kind::kNone},
        {"before revision 2", with(header_bytes({}), 3268, 4, 70000) + traces, Kind::kNone},
        {"trace headers 2.0", with(header_bytes(two), 3506, 4, 1) + traces, Kind::kRevision2Layout},
        {"survey type 2.1", with(header_bytes(two_1), 3508, 2, 1) + traces, Kind::kNone},
        {"trace headers 2.1", with(header_bytes(two_1), 3506, 2, 1) + traces,
         Kind::kRevision2Layout},
        {"first trace", with(header_bytes(two), 3524, 4, 4096) + traces, Kind::kRevision2Layout},
        {"first trace here", with(header_bytes(two), 3524, 4, 3600) + traces, Kind::kNone},
        {"trailer", with(header_bytes(two), 3528, 4, 1) + traces, Kind::kRevision2Layout},
        {"text header not counted", header_bytes({}) + std::string(3200, ' ') + traces,
         Kind::kTextForTraces},
        // 3.0039 in every sample is 0x40404040, which is four EBCDIC blanks.
        {"samples like text",
         header_bytes({.samples = 2000}) +
             record_bytes({}, 4, std::vector<std::uint32_t>(2000, 0x40404040)),
         Kind::kNone},
        {"bytes", header_bytes({.code = 8}) + std::string(244, '\x05'), Kind::kOtherSampleSize},
        {"doubles", header_bytes({.code = 6}) + std::string(272, '\x05'), Kind::kOtherSampleSize},
        {"both sizes fit", header_bytes({.code = 6}) + std::string(272 * 256, '\xBF'), Kind::kNone},
        {"integers", header_bytes({.code = 2}) + integers, Kind::kNotIeee},
        {"zeros", header_bytes({.code = 2}) + record_bytes({}, 4, {0, 0, 0, 0}), Kind::kNone},
        {"floats under 2", header_bytes({.code = 2}) + traces, Kind::kNone},
        {"integers under 5", header_bytes({}) + integers, Kind::kNone},
        {"bare", many_bare, Kind::kBareTraces},
        {"SEG-D", segd, Kind::kSegd},
        {"SPS", sps, Kind::kSpsText},
        {"text", "one\ntwo\n", Kind::kText},
        {"dataset", "KDFILE001\n/a\n/b\n", Kind::kDataset},
        {"tape image", std::string("\x04\0\0\0abcd\x04\0\0\0", 12), Kind::kTapeImage},
    };
    for (const auto& [name, bytes, kind] : files) {
        SCOPED_TRACE(name);
        EXPECT_EQ(open(bytes) == SegyOpening::kOpened, kind == Kind::kNone) << log_.text();
        EXPECT_EQ(reader_.refusal().kind, kind);
        EXPECT_EQ(reader_.refusal().text().empty(), kind == Kind::kNone);
    }
}

TEST_F(SegyReaderTest, AFileThatShrinksWhileItIsReadIsAFault) {
    const std::string path = folder_.write("big.sgy", header_bytes({}));
    std::filesystem::resize_file(path, 3600 + 256 * 20'000);  // beyond what is read at once
    ASSERT_EQ(open_path(path), SegyOpening::kOpened);
    ASSERT_EQ(reader_.read_next(), 1);
    std::filesystem::resize_file(path, 3600 + 256 * 100);
    while (reader_.read_next() == 1) continue;
    EXPECT_THAT(reader_.fault().reason(), HasSubstr(" of 20,000 cannot be read: the file has"));
}

TEST_F(SegyReaderTest, AFileBeyond4GiBIsReadAtItsEnd) {
    // A sparse file: 20,000,000 records of 256 bytes, of which the last one is written.
    constexpr std::int64_t kTraces = 20'000'000;
    constexpr std::int64_t kLast = 3600 + (kTraces - 1) * 256;  // 5,120,003,344
    const std::string path = folder_.write("sparse.sgy", header_bytes({}));
    {
        std::ofstream file(path, std::ios::binary | std::ios::in);
        file.seekp(kLast);
        const std::string record = trace_of(4321);
        file.write(record.data(), static_cast<std::streamsize>(record.size()));
        if (!file.flush()) GTEST_SKIP() << "no room for a sparse file";
    }
    ASSERT_EQ(open_path(path), SegyOpening::kOpened);
    EXPECT_THAT(log_.text(), HasSubstr("Number of Traces:           20000000\n"));
    EXPECT_THAT(log_.text(), HasSubstr("File Size:                  5120003600\n"));
    ASSERT_EQ(reader_.read_trace(kTraces - 1), 1);
    EXPECT_EQ(word("FFID"), 4321);
    EXPECT_THAT(floats(), ElementsAre(1, 2, 0, 0));
    EXPECT_EQ(reader_.read_next(), 0);
}

}  // namespace
}  // namespace halvern
