#include "segd/segd_tape_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "segd/image_files.h"
#include "segd/record_bytes.h"
#include "segy/segy_disk_output.h"
#include "support/small_segy.h"
#include "tape/image_bytes.h"
#include "tape/image_tools.h"
#include "tape/tape_job.h"
#include "trace/big_endian.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

const std::string kOneToFive = hex("3F800000 40000000 40400000 40800000 40A00000");

std::string record(const RecordParts& parts, const std::vector<std::string>& traces) {
    std::string bytes = block(parts.header());
    for (const std::string& trace : traces) bytes += block(trace);
    return bytes + filemark();
}
std::string small_record(int file) {
    const RecordParts parts{.file = file, .sets = {{1, 1, 8}}};
    return record(parts, {parts.trace(1, 1, kOneToFive)});
}

class SegdTape : public TapeJob {
protected:
    void read(const std::string& bytes, std::vector<std::string> lines = {}) {
        folder.write("tape.tap", bytes);
        run<SegdTapeInput>(std::move(lines));
    }
};

TEST_F(SegdTape, EveryChannelBecomesATrace) {
    // Two auxiliaries of 16 ms and descale 1/2, then two seismic traces of 8 ms and descale 2.
    const RecordParts parts{.file = 427,
                            .sets = {{1, 1, 16, hex("0084"), 9}, {2, 2, 8, hex("0004")}}};
    const std::string nine = kOneToFive + hex("C0000000 FFFFFFFF 7F800000 3F800000");
    folder.write("Halvern.segd",
                 "# shot\n\nTEMP\tGN 9 U3  # point\r\nFOLD TE1 7 U1\nfold TH 1 U1\nFOLD TH 1\n");
    read(record(parts, {parts.trace(1, 1, nine, 1, 9), parts.trace(2, 1, kOneToFive, 1, 5),
                        parts.trace(2, 2, kOneToFive.substr(0, 8), 1, 5)}) +  // 2 of its 5
         small_record(428) +
         filemark());
    ASSERT_EQ(traces.size(), 4u);
    EXPECT_FALSE(ended_in_error);
    EXPECT_EQ(line_samples, 5);  // of the seismic set
    EXPECT_EQ(line_interval_us, 2000);
    EXPECT_EQ(traces[0].samples, (std::vector<float>{.5f, 1, 1.5f, 2, 2.5f}));
    EXPECT_EQ(traces[1].samples, (std::vector<float>{2, 4, 6, 8, 10}));
    EXPECT_EQ(traces[2].samples, (std::vector<float>{2, 4, 0, 0, 0}));
    EXPECT_EQ(traces[3].samples, (std::vector<float>{1, 2, 3, 4, 5}));
    const struct {
        const char* word;
        double values[4];
    } kWords[] = {
        {"FFID", {427, 427, 427, 428}}, {"CHAN", {1, 1, 2, 1}},
        {"CHANSET", {1, 2, 2, 1}},      {"TRACEID", {3, 1, 1, 1}},
        {"DTIME", {31, 31, 31, 31}},    {"HTIME", {10, 10, 10, 10}},
        {"MTIME", {20, 20, 20, 20}},    {"STIME", {30, 30, 30, 30}},
        {"SEQCHAN", {1, 2, 3, 1}},      {"SEQFFID", {1, 1, 1, 2}},
        {"SOULINE", {10, 10, 10, 10}},  {"SOUPOINT", {20, 20, 20, 20}},
        {"SOUINDEX", {5, 5, 5, 5}},     {"RECLINE", {7, 7, 7, 0}},
        {"RECPOINT", {-2, -2, -2, 0}},  {"RECINDEX", {3, 3, 3, 0}},
        {"TEMP", {20, 20, 20, 20}},     {"FOLD", {3, 3, 3, 0}},
    };
    for (const auto& expected : kWords) {
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(header_word(i, expected.word), expected.values[i])
                << expected.word << " of " << i;
        }
    }
    EXPECT_THAT(
        job_log,
        HasSubstr("Invalid SEGD transcription code (SEGY header word invalid): 'fold TH 1 U1'\n"));
    EXPECT_THAT(job_log, HasSubstr("Invalid SEGD transcription code: 'FOLD TH 1'\n"));
    EXPECT_THAT(job_log, HasSubstr("Reading File 2 - FFID = 428\n"));
    EXPECT_THAT(job_log,
                HasSubstr("WARNING in SEG-D Tape Input: 2 traces have another length than the "
                          "line's 5 samples"));
    EXPECT_THAT(job_log, HasSubstr("Last tape has been read!!!\n"));
}

TEST_F(SegdTape, LogsTheFirstHeader) {
    const RecordParts parts{.file = 427, .format = 8036, .trailers = 2, .extra_header = zeros(96)};
    read(record(parts, {parts.trace(1, 1, zeros(15)), parts.trace(1, 2, zeros(15))}),
         {"SEGDTYPE=2", "BLOCKED=1", "TRACELENGTH=4", "EJECTWAIT=60"});
    std::string plain = job_log;
    for (const std::string prefix = "SEG-D Tape Input: ";
         plain.find(prefix) != std::string::npos;) {
        plain.erase(plain.find(prefix), prefix.size());
    }
    EXPECT_THAT(plain, HasSubstr("Number of Files to Skip     = 0\n"
                                 "Blocking Status             = BLOCKED\n"
                                 "Type of SEG-D               = SERCEL 388\n"
                                 "Eject tape and wait         = 60 seconds.\n"
                                 "Trace Length                = 4\n"));
    EXPECT_THAT(plain, HasSubstr("SEGD Description file '" + folder.file("Halvern.segd") +
                                 "' cannot be read.  No extra SEGD information read.\n"));
    EXPECT_THAT(plain, HasSubstr("First General Header Information:\n"
                                 "SEG-D Revision    = 1.0\n"
                                 "FFID              = 427\n"
                                 "Data format       = 8036\n"
                                 "Man Code          = 13\n"
                                 "Bytes Per Scan    = 0\n"
                                 "SampleRate        = 2.0\n"
                                 "Trace Length      = 0.008\n"
                                 "Number of Samples = 5\n"
                                 "Year              = 1924\n"
                                 "Day               = 31\n"
                                 "Time              =10:20:30\n"
                                 "Number of extra general headers = 2\n"
                                 "Number of extended headers      = 3\n"
                                 "Number of external headers      = 0\n"
                                 "Number of trailers              = 2\n"
                                 "Number of channel sets          = 1\n"
                                 "Scan Type 1 Channel Set 1\n"
                                 "Start/End time           = 0-8\n"
                                 "Number of channels       = 2\n"
                                 "Descale Multiplier       = 1.000000\n"
                                 "Alias Filter Frequency   = 0\n"));
    EXPECT_EQ(line_samples, 2);  // 4 ms at 2 ms
    EXPECT_EQ(traces.size(), 2u);
    EXPECT_THAT(job_log, Not(HasSubstr("another length")));
}

TEST_F(SegdTape, SetsOfAnotherIntervalAreLeftOutAndCounted) {
    const RecordParts parts{.file = 3, .sets = {{1, 2, 8, hex("0000"), 9, 1}, {2, 1, 8}}};
    read(record(parts, {parts.trace(1, 1, zeros(36)), parts.trace(1, 2, zeros(36)),
                        parts.trace(2, 1, kOneToFive)}));
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(header_word(0, "SEQCHAN"), 3);
    EXPECT_THAT(job_log,
                HasSubstr("2 traces have another sample interval than the line's 2.000 ms"));
}

TEST_F(SegdTape, SkipsFilesInStepsOfFive) {
    std::string tape;
    for (int file = 1; file <= 9; ++file) tape += small_record(file);
    const std::string label = block("   1SD2.0RECORD" + std::string(113, ' ')) + filemark();
    for (const std::string& start : {std::string(), label}) {
        read(start + tape, {"NUMFILESFORWARD=7"});
        ASSERT_EQ(traces.size(), 2u);
        EXPECT_EQ(header_word(0, "FFID"), 8);
        EXPECT_THAT(job_log, HasSubstr("Skipping forward 5 files...done with 5/7\n"));
        EXPECT_THAT(job_log, HasSubstr("Skipping forward 2 files...done with 7/7\n"));
    }
    read(filemark() + tape, {"NUMFILESFORWARD=7"});  // a file without blocks is one, too
    EXPECT_EQ(header_word(0, "FFID"), 7);
    read(tape, {"NUMFILESFORWARD=12"});
    EXPECT_TRUE(ended_in_error);
    EXPECT_THAT(job_log, HasSubstr("ERROR forwarding to next file.  Job terminating.\n"));
}

TEST_F(SegdTape, BadRecordsAndTracesAreReportedAndPassed) {
    const RecordParts parts{.file = 2};
    std::string no_channels = RecordParts{.file = 3}.header();
    no_channels.replace(104, 2, hex("0000"));
    read(small_record(1) + block("nonsense") + filemark() + block(no_channels) + filemark() +
         record(parts, {"bad", parts.trace(1, 2, kOneToFive)}) +
         record(parts, {parts.trace(1, 2, ""), parts.trace(1, 1, kOneToFive)}) +
         block(parts.header()) + block("lost", 0x80000000) + block(parts.trace(1, 2, kOneToFive)) +
         filemark() + record(parts, {parts.trace(1, 1, kOneToFive)}));
    EXPECT_FALSE(ended_in_error);
    EXPECT_EQ(traces.size(), 5u);
    for (const std::string& words :
         {std::string("Failure reading SEG-D General Header.\n"),
          std::string("ERROR reading headers at file 2.  Reading forward to next file.\n"),
          std::string("Failure reading SEG-D Channel Set Header for FFID 3.\n"),
          std::string("Failure reading SEG-D Trace Header at FFID = 2, Channel = 1.\n"),
          std::string("ERROR scanning trace, FFID = 2, channel = 2\n"),
          "ERROR reading tape: " + image + "\n",
          std::string("Failure reading SEG-D Trace at FFID = 2, Channel = 1.\n"),
          std::string("FFID 2 has 1 of the 2 traces that its header announces.\n")}) {
        EXPECT_THAT(job_log, HasSubstr(words));
    }
    read(block(parts.header() + parts.trace(1, 1, kOneToFive) + parts.trace(1, 2, kOneToFive) +
               "lost") +
             filemark(),
         {"BLOCKED=1"});
    EXPECT_THAT(job_log, HasSubstr("FFID 2 has 4 bytes that are no trace."));
}

// A record after it may be whole, but cannot be reached.
TEST_F(SegdTape, AFaultThatCannotBePassedEndsTheJob) {
    const RecordParts parts{.file = 2};
    const std::string fault = word(99) + "no block of 99 bytes" + word(98);
    for (const char* blocked : {"BLOCKED=0", "BLOCKED=1"}) {
        read(small_record(1) + block(parts.header()) + block(parts.trace(1, 1, kOneToFive)) +
                 fault + small_record(3),
             {blocked});
        EXPECT_EQ(traces.size(), 2u);
        EXPECT_TRUE(ended_in_error);
        EXPECT_THAT(job_log, HasSubstr("ERROR forwarding to next file.  Job terminating.\n"));
    }
}

TEST_F(SegdTape, AHundredBadHeadersEndTheJob) {
    std::string tape = small_record(1);
    for (int i = 0; i < 120; ++i) tape += block("nonsense") + filemark();
    read(tape + small_record(2));
    EXPECT_TRUE(ended_in_error);
    EXPECT_EQ(traces.size(), 1u);
    EXPECT_THAT(job_log, HasSubstr("ERROR reading headers at file 100."));
    EXPECT_THAT(job_log, HasSubstr("ERROR reading 100 headers.  Job Terminating\n"));
    read(small_record(1) + block("nonsense"));
    EXPECT_TRUE(ended_in_error);
    EXPECT_THAT(job_log, HasSubstr("ERROR forwarding to next file.  Job terminating.\n"));
}

TEST_F(SegdTape, WhatCannotBeReadFromTheStartEndsTheJob) {
    const RecordParts multiplexed{.format = 58};
    std::string revision_3 = RecordParts{}.header();
    revision_3.replace(42, 2, hex("0300"));
    const struct {
        std::string bytes;
        std::string words;
    } kTapes[] = {
        {"", "Cannot read from tape drive: " + image + "\n"},
        {block("nonsense"), "Error scanning general header information\n"},
        {block(multiplexed.header()),
         "Data format = 58.  Only data formats 8015, 8036, 8048, and 8058 are supported.\n"},
        {block(revision_3), "The record is of SEG-D revision 3."},
    };
    for (const auto& tape : kTapes) {
        read(tape.bytes);
        EXPECT_TRUE(ended_in_error);
        EXPECT_THAT(job_log, HasSubstr("*** ERROR in SEG-D Tape Input: " + tape.words));
    }
    read(small_record(1), {"DEVICE=" + folder.write("on_disk.segd", "x")});
    EXPECT_THAT(job_log, HasSubstr("SEG-D Disk read not supported\n"));
    read(small_record(1), {"HEADERFILE=none"});
    EXPECT_THAT(job_log, HasSubstr("Cannot read trace header format 'none'.\n"));
    read(small_record(1), {"DEVICE=NONE"});
    EXPECT_THAT(job_log, HasSubstr("Cannot open tape drive: NONE\n"));
}

TEST_F(SegdTape, ReadsFurtherTapes) {
    ListedOperator present;
    SetTapePrompt(&present);
    present.deeds = {[&] { folder.write("tape.tap", small_record(2)); }};
    read(small_record(1) + filemark());
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(header_word(1, "FFID"), 2);
    EXPECT_EQ(header_word(1, "SEQFFID"), 2);
    EXPECT_THAT(present.questions, HasSubstr("click OK.  Otherwise, click Cancel. [OK|Cancel]\n"));
}

// The real record through an image to SEG-Y. The values were taken from its bytes with another
// program: samples as recorded, times the multiplier 6.742086616486083e-05.
TEST_F(SegdTape, TheLandRecordBecomesSegy) {
    const std::optional<std::string> land = field_data("land_record_8058.segd");
    if (!land) GTEST_SKIP();
    const auto split = [](const std::string& from, const auto& block_of) {
        return segd::split_records(from, segd::Dialect::kOther, block_of);
    };
    ASSERT_EQ(make_image(std::span(&*land, 1), image, false, split), "");
    for (const char* blocked : {"BLOCKED=0", "BLOCKED=1"}) {
        LogCapture quiet;
        SegdTapeInput input({.lines = {blocked}}, LogFlag::kQuiet);
        input.SetNext(std::make_unique<SegyDiskOutput>(
            FlowSection{.lines = {"OUTPUTFORMAT=0", "FILE=" + folder.file(blocked)}},
            LogFlag::kQuiet));
        input.RunInput();
    }
    const std::string file = file_bytes(folder.file("BLOCKED=0"));
    EXPECT_TRUE(file == file_bytes(folder.file("BLOCKED=1")));
    ASSERT_EQ(file.size(), 3600u + 6 * (240 + 4001 * 4));
    const auto bytes = std::as_bytes(std::span(file));
    const auto i2 = [&](std::size_t at) { return get_i16(bytes.subspan(at).first<2>()); };
    const auto i4 = [&](std::size_t at) { return get_i32(bytes.subspan(at).first<4>()); };
    EXPECT_EQ(i2(3216), 1000);  // interval in microseconds
    EXPECT_EQ(i2(3220), 4001);
    constexpr struct {
        double first, last;
    } kTraces[] = {{-1680.6845703125, -2343.6845703125},   {2494.168701171875, -4005.831298828125},
                   {-1865.6907958984375, -492.6908264160}, {358.75054931640625, 1418.7506103515625},
                   {-1111.0604248046875, 4517.939453125},  {-2478.916748046875, 1941.083251953125}};
    for (std::size_t trace = 0; trace < 6; ++trace) {
        SCOPED_TRACE(trace);
        const std::size_t at = 3600 + trace * 16244;
        const auto sample = [&](std::size_t i) {
            return get_f32(bytes.subspan(at + 240 + i * 4).first<4>()) / 6.742086616486083e-05;
        };
        EXPECT_EQ(i4(at + 8), 1);                             // FFID
        EXPECT_EQ(i4(at + 12), static_cast<int>(trace) + 1);  // CHAN
        EXPECT_EQ(i2(at + 158), 126);                         // day and time
        EXPECT_EQ(i2(at + 160) * 10000 + i2(at + 162) * 100 + i2(at + 164), 113835);
        EXPECT_EQ(i4(at + 208), trace < 3 ? 1 : 2);          // receiver point
        EXPECT_EQ(i2(at + 172), 9);                          // source index
        EXPECT_NEAR(sample(0), kTraces[trace].first, 2e-4);  // a float's 24 bits
        EXPECT_NEAR(sample(4000), kTraces[trace].last, 4e-4);
        if (trace > 0) continue;
        EXPECT_NEAR(sample(4), -3660.6845703125, 4e-4);
        EXPECT_NEAR(sample(2178), -137975.6875, 1e-2);  // the extremes
        EXPECT_NEAR(sample(2160), 133744.3125, 1e-2);
    }
    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    ASSERT_EQ(extract_image(image, folder.path().string(), "r", ".segd", made, bad_blocks), "");
    EXPECT_TRUE(made.size() == 1 && file_bytes(made[0]) == file_bytes(*land));
}

}  // namespace
}  // namespace halvern
