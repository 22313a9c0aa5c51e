#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/file_lock.h"
#include "segy/segy_bytes.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_disk_output.h"
#include "support/item_bench.h"
#include "support/job_end.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr std::uint32_t kOne = 0x3F800000, kTwo = 0x40000000;  // IEEE 1.0 and 2.0
using Lines = std::vector<std::string>;

// An input, an output and their files.
class SegyDiskFlow : public testing::Test {
protected:
    /// Runs input and output with these lines and gives the log.
    std::string run(Lines input, Lines output, LogFlag log_parameters = LogFlag::kQuiet) {
        LogCapture log;
        try {
            const auto head = make(std::move(input), std::move(output), log_parameters);
            head->RunInput();
        } catch (const JobEnded&) {
            return log.text() + "[job ended]";
        }
        return log.text();
    }
    std::unique_ptr<SegyDiskInput> make(Lines input, Lines output, LogFlag log = LogFlag::kQuiet) {
        input.insert(input.begin(), {"FILE=" + in_, "HEADERFILE=" + definition_});
        output.insert(output.begin(), "FILE=" + out_);
        auto head = std::make_unique<SegyDiskInput>(FlowSection{.lines = input}, log);
        head->SetNext(std::make_unique<SegyDiskOutput>(FlowSection{.lines = output}, log));
        return head;
    }
    void write_input(const std::string& bytes) { folder_.write("in.sgy", bytes); }
    std::string output() { return file_bytes(out_); }
    std::vector<std::uint32_t> ffids() {
        const std::string bytes = output();
        std::vector<std::uint32_t> values;
        for (std::size_t at = 3600; at + 256 <= bytes.size(); at += 256) {
            values.push_back(big_endian(bytes, at + 8, 4));
        }
        return values;
    }

    TemporaryFolder folder_;
    std::string definition_ = HALVERN_SOURCE_DIR "/header/default";
    std::string in_ = folder_.file("in.sgy");
    std::string out_ = folder_.file("out.sgy");
};

std::string trace_of(int ffid, std::uint32_t first = kOne) {
    return record_bytes({{8, 4, ffid}, {28, 2, 1}}, 4, {first, kTwo, 0, 0});
}
/// The same as an output numbers and stamps it.
std::string written_trace(int number, int ffid, std::uint32_t first = kOne) {
    std::string bytes = trace_of(ffid, first);
    put_big_endian(bytes, 0, 4, static_cast<std::uint32_t>(number));
    put_big_endian(bytes, 4, 4, static_cast<std::uint32_t>(number));
    put_big_endian(bytes, 114, 2, 4);
    put_big_endian(bytes, 116, 2, 4000);
    return bytes;
}
std::string traces_of(int first, int last) {
    std::string bytes;
    for (int ffid = first; ffid <= last; ++ffid) bytes += trace_of(ffid);
    return bytes;
}

TEST_F(SegyDiskFlow, CopiesIeeeBitForBit) {
    // A NaN with a payload, negative zero and a denormal are data like any other.
    write_input(header_bytes({}) + trace_of(5, 0x7FA12345) + trace_of(6, 0x80000000) +
                trace_of(7, 0x00000001));
    const std::string log = run({}, {"OUTPUTFORMAT=0"});
    EXPECT_EQ(output(), header_bytes({}) + written_trace(1, 5, 0x7FA12345) +
                            written_trace(2, 6, 0x80000000) + written_trace(3, 7, 0x00000001));
    EXPECT_THAT(log,
                AllOf(HasSubstr("Starting Data Read\nReading Trace 0\n"),
                      HasSubstr("SEG-Y Disk Output: Wrote 3 traces of 4 samples to '" + out_)));
}

TEST_F(SegyDiskFlow, AppendingNumbersOnAndKeepsTheFilesFormat) {
    write_input(header_bytes({}) + traces_of(50, 51));
    folder_.write("out.sgy", header_bytes({}) + traces_of(1, 10));
    run({}, {"OUTPUTFORMAT=2", "WRITETYPE=0"});
    EXPECT_EQ(output(),
              header_bytes({}) + traces_of(1, 10) + written_trace(11, 50) + written_trace(12, 51));
    // A file that does not exist, or holds headers alone, is begun.
    for (const std::string& headers :
         {std::string(), header_bytes({.interval_us = 9}),
          header_bytes({.revision = 0x0100, .text_headers = 1}) + std::string(3200, ' ')}) {
        std::filesystem::remove(out_);
        if (!headers.empty()) folder_.write("out.sgy", headers);
        EXPECT_THAT(run({}, {"OUTPUTFORMAT=0", "WRITETYPE=0"}), Not(HasSubstr("[job ended]")));
        EXPECT_EQ(output(), header_bytes({}) + written_trace(1, 50) + written_trace(2, 51));
    }
}

// Traces 101 … 108, numbered 1 … 8 in TRNUML.
TEST_F(SegyDiskFlow, SelectionPassesOnlyItsTraces) {
    std::string bytes = header_bytes({});
    for (int i = 1; i <= 8; ++i) {
        bytes += record_bytes({{0, 4, i}, {8, 4, 100 + i}}, 4, {kOne, kOne, kOne, kOne});
    }
    write_input(bytes);
    struct Selection {
        const char *header, *ranges;
        std::vector<std::uint32_t> ffids;
        const char* log;
    };
    const std::vector<std::uint32_t> all = {101, 102, 103, 104, 105, 106, 107, 108};
    for (const auto& [header, ranges, passed, log] : {
             Selection{"FFID", "102-103,107", {102, 103, 107}, "Range 2: Start 107.0, End 107.0\n"},
             {"FFID", "102-107(2)", {102, 104, 106}, "Range 1: Start 102.0, End 107.0, Inc 2.0\n"},
             {"FFID", "", all, ""},
             {"NOWORD", "102", all, "'NOWORD' is not defined"},
             {"TRNUML", "6-7", {106, 107}, "Fast-forward to trace #6\n"},
             {"TRNUML", "6,2", {106}, "also name traces before #6"},
             {"TRNUMR", "5,0", {105, 106, 107, 108}, "trace #5 of the file has TRNUMR 0"},
             {"TRNUMR", "-3-0", {101, 102, 103, 104, 105, 106, 107, 108}, "to trace #-3\n"},
         }) {
        SCOPED_TRACE(testing::Message() << header << ' ' << ranges);
        EXPECT_THAT(run({"READALLTRACES=0", std::string("SELECTHEADER=") + header,
                         std::string("SELECTRANGE=") + ranges},
                        {"OUTPUTFORMAT=0"}),
                    HasSubstr(log));
        EXPECT_EQ(ffids(), passed);
    }
}

TEST_F(SegyDiskFlow, AFileThatShrinksWhileItIsReadEndsTheJob) {
    class Cutting final : public ProcessFlowItem {
    public:
        explicit Cutting(std::string path)
            : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet), path_(std::move(path)) {}
        int ProcessTrace(LineHeader&, TraceHeaderDefinition&, TraceSamples&) override {
            std::filesystem::resize_file(path_, 5000);
            return kKeepBack;
        }

    private:
        std::string path_;
    };
    const std::string path = folder_.write("in.sgy", header_bytes({}));
    std::filesystem::resize_file(path, 3600 + 256 * 20'000);  // beyond what is read at once
    SegyDiskInput input(
        {.lines = {"FILE=" + path, "HEADERFILE=" HALVERN_SOURCE_DIR "/header/default"}},
        LogFlag::kQuiet);
    input.SetNext(std::make_unique<Cutting>(path));
    EXPECT_JOB_ERROR(input.RunInput(), "cannot be read: the file has become shorter");
}

TEST_F(SegyDiskFlow, FastForwardBehindTheEndReadsNothingAndWritesNothing) {
    write_input(header_bytes({}) + traces_of(1, 3));
    EXPECT_THAT(
        run({"READALLTRACES=0", "SELECTHEADER=TRNUML", "SELECTRANGE=1e18"}, {"OUTPUTFORMAT=0"}),
        HasSubstr("nothing was written to"));
    EXPECT_FALSE(std::filesystem::exists(out_));
}

// The first trace prepares the chain, wanted or not; an appended file stays as it is without one.
TEST_F(SegyDiskFlow, WithoutAWantedTraceOutputsArePreparedAndLoseNothing) {
    write_input(header_bytes({}) + traces_of(1, 3));
    const Lines nothing = {"READALLTRACES=0", "SELECTHEADER=FFID", "SELECTRANGE=9"};
    for (const std::string& there : {header_bytes({.interval_us = 9}), std::string("notes")}) {
        folder_.write("out.sgy", there);
        EXPECT_THAT(run(nothing, {"WRITETYPE=0"}), Not(HasSubstr("[job ended]")));
        EXPECT_EQ(output(), there);
    }
    EXPECT_THAT(run(nothing, {"USETIME=1", "TIME=-1"}), HasSubstr("[job ended]"));
    EXPECT_THAT(run(nothing, {}), HasSubstr("No trace came"));
    EXPECT_EQ(output(), "notes");
    std::filesystem::remove(out_);
    EXPECT_THAT(run(nothing, {}), HasSubstr("nothing was written to '" + out_ + "'"));
    EXPECT_EQ(output(), "");
}

TEST_F(SegyDiskFlow, ShortensToWholeMillisecondsOfSampling) {
    struct Case {
        int interval_us, time_ms, samples;
    };
    // 100 / 4 + 1 = 26; 1.5 ms counts as 1 ms: 10 / 1 + 1 = 11; 0.5 ms: 10 / 0.5 + 1 = 21;
    // 400 ms are more than the 32 samples there are.
    for (const auto [interval_us, time_ms, samples] :
         {Case{4000, 100, 26}, {1500, 10, 11}, {500, 10, 21}, {4000, 0, 1}, {4000, 400, 32}}) {
        write_input(header_bytes({.interval_us = interval_us, .samples = 32}) +
                    record_bytes({}, 4, std::vector<std::uint32_t>(32, kOne)));
        const std::string log =
            run({}, {"OUTPUTFORMAT=1", "USETIME=1", "TIME=" + std::to_string(time_ms)});
        const std::string bytes = output();
        EXPECT_EQ(bytes.size(), 3600u + 240u + 4u * static_cast<unsigned>(samples));
        for (const std::size_t count : {3220, 3222, 3600 + 114}) {
            EXPECT_EQ(big_endian(bytes, count, 2), static_cast<std::uint32_t>(samples));
        }
        EXPECT_EQ(log.find("User requested 400ms. of time") != std::string::npos, time_ms == 400);
    }
}

TEST_F(SegyDiskFlow, FailuresEndTheJobInTheirWordsAndTouchNothing) {
    const std::string input = header_bytes({}) + traces_of(1, 3);
    write_input(input);
    const std::string link = folder_.file("link.sgy");
    std::filesystem::create_hard_link(in_, link);
    const std::string in = "*** ERROR in SEG-Y Disk Input: ";
    const std::string out = "*** ERROR in SEG-Y Disk Output: ";
    const std::string append = out + "Cannot append to output file '" + out_ + "'.\n" + out;
    struct Failure {
        Lines input, output;
        std::string message;
        std::string existing = "";  // bytes of the output file; empty: none
    };
    const Failure failures[] = {
        {{"FILE=/no/file"}, {}, in + "Input file '/no/file' does not exist.\n"},
        {{"FILE=/"}, {}, in + "Input file '/' cannot be opened.\n"},
        {{"HEADERFILE=/no"}, {}, in + "Cannot read trace header format '" + in_ + "'.\n"},
        {{"READALLTRACES=0", "SELECTRANGE=1-x"}, {}, in + "Cannot parse ranges: 1-x'\n"},
        {{},
         {"USETIME=1", "TIME=-5"},
         out +
             "User requested output time must be >= 0.  It was entered as -5.  Fix and re-run.\n"},
        {{}, {"FILE=a/NONE"}, out + "Output file 'a/NONE' has not been properly selected\n"},
        {{},
         {"FILE=/no/such/x"},
         out + "Cannot open file to write: /no/such/x\n" + out + "No such file or directory.\n"},
        {{}, {"FILE=" + in_}, out + "Output file '" + in_ + "' is the input file"},
        {{}, {"FILE=" + link, "WRITETYPE=0"}, out + "Output file '" + link + "' is the input file"},
        {{},
         {"WRITETYPE=0"},
         append + "Sample rates of output file (2.0) and new data (4.0) differ.\n",
         header_bytes({.interval_us = 2000}) + trace_of(9)},
        {{},
         {"WRITETYPE=0"},
         append + "Number of samples of output file (  3) and new data (  4) differ.\n",
         header_bytes({.samples = 3}) + record_bytes({}, 4, {0, 0, 0})},
        {{},
         {"WRITETYPE=0"},
         out + "The file '" + out_ + "' has the format code 9.",
         header_bytes({.code = 9}) + trace_of(9)},
        {{"READALLTRACES=0", "SELECTHEADER=FFID", "SELECTRANGE=3-4"},
         {"WRITETYPE=2"},
         "'SEG-Y Disk Input' does not pass on every trace once and in order."},
        {{}, {"FILE=" + out_ + ".new7"}, "Choose another name."},
        {{}, {"WRITETYPE=2", "USETIME=1", "TIME=8"}, "do not fit the records of the input file"},
        {{}, {"WRITETYPE=3"}, "You have entered '3'.\n"},
    };
    for (const Failure& failure : failures) {
        if (!failure.existing.empty()) folder_.write("out.sgy", failure.existing);
        EXPECT_THAT(run(failure.input, failure.output),
                    AllOf(HasSubstr(failure.message), HasSubstr("[job ended]")));
        EXPECT_EQ(file_bytes(in_), input);
        EXPECT_EQ(std::filesystem::exists(out_) ? output() : "", failure.existing);
        std::filesystem::remove(out_);
    }
}

TEST_F(SegyDiskFlow, AppendingTakesThePlaceOfATraceThatWasCutShort) {
    write_input(header_bytes({}) + traces_of(1, 1));
    folder_.write("out.sgy", header_bytes({}) + trace_of(9) + trace_of(8).substr(0, 255));
    EXPECT_THAT(run({}, {"WRITETYPE=0"}), HasSubstr("an incomplete trace of 255 bytes"));
    EXPECT_EQ(output(), header_bytes({}) + trace_of(9) + written_trace(2, 1));
}

TEST_F(SegyDiskFlow, AFileThatAnotherJobWritesIsRefused) {
    write_input(header_bytes({}) + traces_of(1, 1));
    folder_.write("out.sgy", "whole");
    const auto other = FileLock::take(out_, FileLock::Missing::kFault);
    for (const char* type : {"WRITETYPE=0", "WRITETYPE=1"}) {
        EXPECT_THAT(run({}, {type}),
                    AllOf(HasSubstr("another job is writing to it.\n"), HasSubstr("[job ended]")));
    }
    EXPECT_EQ(output(), "whole");
}

TEST_F(SegyDiskFlow, ARehearsalFindsFaultsAndTouchesNothing) {
    write_input(header_bytes({}) + traces_of(1, 3));
    const CollectedReports reports;
    const auto rehearse = [&](Lines lines) {
        make({}, std::move(lines), LogFlag::rehearsal(reports))->Rehearse();
    };
    rehearse({});
    EXPECT_FALSE(std::filesystem::exists(out_));
    folder_.write("out.sgy", "whole");
    rehearse({});
    EXPECT_EQ(output(), "whole");
    EXPECT_THAT(reports.of(Weight::kError), testing::IsEmpty());
    EXPECT_THROW(rehearse({"FILE=/no/such/x"}), JobEnded);
    const auto other = FileLock::take(out_, FileLock::Missing::kFault);
    EXPECT_THROW(rehearse({}), JobEnded);
}

TEST_F(SegyDiskFlow, TwoOutputsCannotHaveOneFile) {
    write_input(header_bytes({}) + traces_of(1, 3));
    const auto head = make({}, {});
    head->next()->SetNext(std::make_unique<SegyDiskOutput>(
        FlowSection{.lines = {"FILE=" + folder_.file("./out.sgy")}}, LogFlag::kQuiet));
    EXPECT_JOB_ERROR(head->RunInput(), "Another output of this flow writes to '");
}

TEST_F(SegyDiskFlow, AFullDiskEndsTheJob) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full here";
    write_input(header_bytes({}) + traces_of(1, 3));
    EXPECT_THAT(run({}, {"FILE=/dev/full"}),
                AllOf(HasSubstr("Cannot finish writing to file: /dev/full\n"),
                      HasSubstr("No space left on device.\n"), HasSubstr("[job ended]")));
    write_input(header_bytes({}) + traces_of(1, 20'000));  // 5 MB, more than is held back
    EXPECT_THAT(run({}, {"OUTPUTFORMAT=0", "FILE=/dev/full"}),
                AllOf(HasSubstr("' to file: /dev/full\n"), HasSubstr("[job ended]")));
}

TEST_F(SegyDiskFlow, OverwritesItsInputWhileItIsBeingRead) {
    // 16-bit records, behind an extended text header, many blocks long. Halved amplitudes come out
    // as the same integers with an exponent one larger, so every record changes and can be told.
    constexpr int kTraces = 30'000;
    const std::string headers =
        header_bytes({.samples = 2, .code = 3, .revision = 0x0100, .text_headers = 1}) +
        std::string(3200, 'e');
    std::string before = headers, expected = headers;
    for (int i = 1; i <= kTraces; ++i) {
        const auto sample = static_cast<std::uint32_t>(16384 + i % 16000);
        before += record_bytes({{8, 4, i}}, 2, {sample, 5});
        expected += record_bytes(
            {{0, 4, i}, {4, 4, i}, {8, 4, i}, {114, 2, 2}, {116, 2, 4000}, {168, 2, 1}}, 2,
            {sample, 5});
    }
    write_input(before);

    class Halve final : public ProcessFlowItem {
    public:
        Halve() : ProcessFlowItem(FlowItemKind::kTraceMath, LogFlag::kQuiet) {}
        int ProcessTrace(LineHeader&, TraceHeaderDefinition& header,
                         TraceSamples& samples) override {
            const std::span<float> trace = samples.floats(header);
            for (float& sample : trace) sample *= .5f;
            samples.set_floats(trace);
            return kPassOn;
        }
    };
    LogCapture log;
    SegyDiskInput head({.lines = {"FILE=" + in_, "HEADERFILE=" + definition_}}, LogFlag::kQuiet);
    head.SetNext(std::make_unique<Halve>())
        .SetNext(std::make_unique<SegyDiskOutput>(
            FlowSection{.lines = {"WRITETYPE=2", "OUTPUTFORMAT=0"}}, LogFlag::kQuiet));
    head.RunInput();
    EXPECT_TRUE(file_bytes(in_) == expected);
    EXPECT_FALSE(head.CanReplayInput());
}

TEST_F(SegyDiskFlow, OverwritingStopsBeforeATraceThatIsNotTheRecordsOwn) {
    class At3 final : public ProcessFlowItem {
    public:
        explicit At3(bool drops)
            : ProcessFlowItem(FlowItemKind::kTraceMath, LogFlag::kQuiet), drops_(drops) {}
        int ProcessTrace(LineHeader&, TraceHeaderDefinition&, TraceSamples&) override {
            if (GetReceivedCount() != 3) return kPassOn;
            if (!drops_) SetInputPosition(2);  // the input is moved back
            return drops_ ? kKeepBack : kPassOn;
        }

    private:
        bool drops_;
    };
    for (const auto& [drops, words] :
         {std::pair(true, "Trace 4 of the input would be written over record 3."),
          {false, "Trace 2 of the input would be written over record 3."}}) {
        write_input(header_bytes({}) + traces_of(1, 5));
        const auto head = make({}, {});
        head->SetNext(std::make_unique<At3>(drops))
            .SetNext(std::make_unique<SegyDiskOutput>(FlowSection{.lines = {"WRITETYPE=2"}},
                                                      LogFlag::kQuiet));
        EXPECT_JOB_ERROR(head->RunInput(), words);
        head->DeleteChain();
        EXPECT_EQ(file_bytes(in_),
                  header_bytes({}) + written_trace(1, 1) + written_trace(2, 2) + traces_of(3, 5));
    }
}

TEST_F(SegyDiskFlow, OverwriteInputNeedsASegyInput) {
    ItemBench<SegyDiskOutput> bench({.samples = 4}, {"FILE=" + out_, "WRITETYPE=2"});
    EXPECT_JOB_ERROR(bench.process({1, 2, 3, 4}),
                     "There is no input file to overwrite.  Change the option in SEGY DISK OUTPUT "
                     "to OVERWRITE or APPEND.\n");
}

TEST_F(SegyDiskFlow, WarnsOfOwnCountsAndOfSamplesThatAreNotFinite) {
    write_input(header_bytes({}) + record_bytes({{114, 2, 99}}, 4, {0x7FC00000, kOne, kOne, kOne}));
    EXPECT_THAT(run({}, {"OUTPUTFORMAT=2"}),
                AllOf(HasSubstr("*** WARNING in SEG-Y Disk Input: 1 traces give"),
                      HasSubstr("*** WARNING in SEG-Y Disk Output: 1 samples were not finite")));
}

// By hand: -32768 / 2^3 has the magnitude 4096, which comes to 16384 with an exponent of 2.
TEST_F(SegyDiskFlow, CountsSixteenBitTracesThatBecomeCoarser) {
    write_input(
        header_bytes({.samples = 2, .code = 3}) + record_bytes({{168, 2, 3}}, 2, {0x8000, 1}) +
        record_bytes({{168, 2, 3}}, 2, {0x7FFF, 1}) + record_bytes({{168, 2, 3}}, 2, {100, 1}));
    EXPECT_THAT(run({}, {"OUTPUTFORMAT=2"}), HasSubstr(" traces of 16-bit integers"));
    EXPECT_EQ(big_endian(output(), 3600 + 168, 2), 2u);
}

TEST_F(SegyDiskFlow, LogsItsParametersInOrder) {
    write_input(header_bytes({}));
    EXPECT_THAT(run({"READALLTRACES=0", "SELECTHEADER=FFID", "SELECTRANGE=1-2"},
                    {"USETIME=1", "TIME=20", "OUTPUTFORMAT=9"}, LogFlag::kLog),
                HasSubstr("SEG-Y Disk Input: Input disk file             = " + in_ +
                          "\n"
                          "SEG-Y Disk Input: Header definition file name = " +
                          definition_ +
                          "\n"
                          "SEG-Y Disk Input: Reading selected traces:\n"
                          "SEG-Y Disk Input: Selection Header          = FFID\n"
                          "SEG-Y Disk Input: Selection Ranges          = 1-2\n"
                          "SEG-Y Disk Output: Initializing Flow Item\n"
                          "SEG-Y Disk Output: Overwriting output file " +
                          out_ +
                          "\n"
                          "SEG-Y Disk Output: Output type = IBM Floating Point\n"
                          "SEG-Y Disk Output: The traces will be shortened to 20 msec.\n"));
    EXPECT_THAT(run({}, {"WRITETYPE=2"}, LogFlag::kLog),
                AllOf(HasSubstr("SEG-Y Disk Input: Reading all traces\n"),
                      HasSubstr("SEG-Y Disk Output: Overwriting input file.\nSEG-Y File '")));
}

// The real files, with values that independent readers give for them.
TEST_F(SegyDiskFlow, FieldFileComesThroughWithIdenticalSamples) {
    const std::optional<std::string> path = field_data("marine_shots.segy");
    if (!path) GTEST_SKIP();
    const std::string log = run({"FILE=" + *path}, {"OUTPUTFORMAT=1"});
    EXPECT_THAT(log, AllOf(HasSubstr("Number of Traces:           480\n"),
                           HasSubstr("480 traces give a number of samples")));
    const std::string before = file_bytes(*path), after = output();
    ASSERT_EQ(after.size(), before.size());
    EXPECT_EQ(big_endian(after, 3600 + 240, 4), 0x3F6F5C00u);  // 0.027187347412109375
    for (std::size_t at = 3600; at < before.size(); at += 2640) {
        ASSERT_EQ(after.compare(at + 240, 2400, before, at + 240, 2400), 0) << "at " << at;
    }
}

}  // namespace
}  // namespace halvern
