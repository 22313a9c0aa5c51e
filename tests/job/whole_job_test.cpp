// Whole jobs: a flow file in, the log and the output's bytes out, by the job program itself.

#include <gmock/gmock.h>

#include "job/whole_job.h"
#include "support/small_segy.h"

namespace {

using namespace halvern::testing_support;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

TEST_F(WholeJob, ReadsProcessesAndWrites) {
    const std::string input =
        folder.write("in.sgy", small_segy(4000, 4,
                                          {{.ffid = 7, .samples = {3, 4, 0, 0}},
                                           {.ffid = 8, .samples = {1, 1, 1, 1}},
                                           {.ffid = 9, .samples = {0, 0, 0, 2}}}));
    EXPECT_EQ(run("$SEGYDINPUT\nFILE=" + input +
                  "\nREADALLTRACES=0\nSELECTHEADER=FFID\nSELECTRANGE=7-9(2)\n$$MUTE\n$AGC\n"
                  "WINDOWSIZE=8\n$SEGYDOUTPUT\nFILE=" +
                  folder.file("out.sgy") + "\nOUTPUTFORMAT=0\n"),
              0);
    // By hand: the window of 2 samples has h = 1, so sample j sees j-1 and j: 3/3, 4/5; 2/2.
    std::string expected = small_segy(
        4000, 4, {{.ffid = 7, .samples = {1, .8f, 0, 0}}, {.ffid = 9, .samples = {0, 0, 0, 1}}});
    for (int trace = 0; trace < 2; ++trace) {  // stamped: TRNUML, TRNUMR, NUMSAMPS, SAMPRATE
        const std::size_t at = 3600 + static_cast<std::size_t>(trace) * 256;
        expected[at + 3] = expected[at + 7] = static_cast<char>(trace + 1);
        expected[at + 115] = 4;
        expected[at + 116] = 0x0F;
        expected[at + 117] = static_cast<char>(0xA0);
    }
    expected[3223] = 4;  // the field's sample count follows the trace's
    EXPECT_EQ(file_bytes(folder.file("out.sgy")), expected);
    EXPECT_THAT(log, StartsWith("Reading Configuration file 'ROOT/halvern.cfg'.\n"));
    EXPECT_THAT(log, HasSubstr("Configuration file 'ROOT/halvern.cfg' successfully read.\n"));
    EXPECT_THAT(log, HasSubstr("AGC: Initializing Flow Item\nAGC: Window Size = 8\n"));
    EXPECT_THAT(log, HasSubstr("Starting flow at 'TIME'\n"));
    EXPECT_THAT(log, EndsWith("SEG-Y Disk Output: Completed Flow Item\nAGC: Completed Flow Item\n"
                              "SEG-Y Disk Input: Completed Flow Item\n"
                              "Job completed normally at 'TIME'\n"));
    EXPECT_EQ(scratch_files(), 0u);
    for (const char* made :
         {"Prospects/default", "Data/default/segy", "halvern.cfg", "Halvern.defaults"}) {
        EXPECT_TRUE(fs::exists(folder.path() / made)) << made;
    }
}

TEST_F(WholeJob, EndsInErrorWithItsReason) {
    const std::vector<std::pair<std::string, std::string>> flows = {
        {"$SEGYDINPUT\nFILE=/no/such/file\n",
         "*** ERROR in SEG-Y Disk Input: Input file '/no/such/file' does not exist.\n"},
        {"$NOSUCHITEM\n", "UNDEFINED STRING:        NOSUCHITEM\nCannot Read parameters from "},
        {"$PROSPECT=nowhere\n$AGC\n", "Cannot read prospect file 'nowhere'\n"},
        {"", "No flow to process.\n"},
        {"$$AGC\n", "No flow to process.\n"},
        {"$GEODISPLAY\n", "is not available in this version"},
    };
    for (const auto& [flow, words] : flows) {
        EXPECT_EQ(run(flow), 1) << flow;
        EXPECT_THAT(log, HasSubstr(words));
        EXPECT_THAT(log, EndsWith("Job terminated with error at 'TIME'\n"));
    }
}

TEST_F(WholeJob, AProcessAtTheHeadRunsNothingAndEndsNormally) {
    EXPECT_EQ(run("$AGC\nWINDOWSIZE=0\n"), 0);
    EXPECT_THAT(log, EndsWith("Job completed normally at 'TIME'\n"));
}

TEST_F(WholeJob, IsNotStartedByHand) {
    const std::string flow = folder.write("flow1", "$AGC\n");
    for (const std::string& arguments : {std::string(), std::string(" log"), " log1 wrong " + flow,
                                         " a rv3086 " + flow + " b c"}) {
        EXPECT_EQ(start("cd " + folder.path().string() + " && " + quoted(program) + arguments), 1);
        EXPECT_THAT(errors, HasSubstr("Invalid Usage of Halvern2.  This program should not be "
                                      "started by the user."));
    }
    EXPECT_EQ(start(quoted(program) + " log rv3086"), 1);  // no flow named, and so no log
    EXPECT_EQ(errors, "");
}

TEST_F(WholeJob, RunsWithoutALogThatCannotBeMadeOrWritten) {
    const std::string flow = folder.write("flow1", "$AGC\n");
    const std::string pipe = folder.file("pipe");  // which nobody reads
    ASSERT_EQ(std::system(("mkfifo " + quoted(pipe)).c_str()), 0);
    for (const auto& [path, words] : std::vector<std::pair<std::string, std::string>>{
             {"/no/such/folder/log", "created: No such file or directory. The job runs without.\n"},
             {pipe, "created: No such device or address. The job runs without.\n"},
             {"/dev/full", "written: No space left on device. The job goes on.\n"}}) {
        EXPECT_EQ(start(quoted(program) + " " + path + " rv3086 " + flow), 0);
        EXPECT_EQ(errors, "halvern2: the log file '" + path + "' cannot be " + words);
    }
}

#if defined(__SANITIZE_ADDRESS__)
#define HALVERN_NEEDS_ADDRESS_SPACE true
#elif defined(__has_feature)
#define HALVERN_NEEDS_ADDRESS_SPACE __has_feature(address_sanitizer)
#else
#define HALVERN_NEEDS_ADDRESS_SPACE false
#endif

// Wherever it happens: from reading the configuration to the sort's last trace.
TEST_F(WholeJob, SaysThatMemoryRanOut) {
    if (HALVERN_NEEDS_ADDRESS_SPACE) GTEST_SKIP() << "the sanitizer's own memory is without limit";
    const std::string input = folder.write("in.sgy", small_segy(4000, 4000, {}));
    fs::resize_file(input, 3600 + std::uintmax_t{1000} * 16240);
    const std::string flow = "$SEGYDINPUT\nFILE=" + input +
                             "\n$FILTER\n$SORT\nBUFFERFILE=1\nFASTBUFFER=1\nHEADER1=FFID\n"
                             "$SEGYDOUTPUT\nFILE=" +
                             folder.file("out.sgy") + "\n";
    int ended_for_memory = 0;
    for (int kilobytes = 10000; kilobytes < 60000; kilobytes += 5000) {
        const int status = run(flow, "ulimit -v " + std::to_string(kilobytes) + "; ");
        EXPECT_EQ(status, log.ends_with("Job completed normally at 'TIME'\n") ? 0 : 1);
        if (status == 0) continue;
        ++ended_for_memory;
        EXPECT_THAT(log, EndsWith("Job terminated with error at 'TIME'\n"));
        EXPECT_EQ(scratch_files(), 0u) << kilobytes;
    }
    EXPECT_GT(ended_for_memory, 3);
}

// The input is sparse and would take the sort many seconds to read.
TEST_F(WholeJob, IsEndedByASignalAndLeavesNothing) {
    const std::string input = folder.write("in.sgy", small_segy(4000, 1000, {}));
    fs::resize_file(input, 3600 + std::uintmax_t{500'000} * 4240);
    folder.write("flow1", "$SEGYDINPUT\nFILE=" + input + "\n$SORT\nBUFFERFILE=1\nHEADER1=FFID\n");
    const char* const script = R"sh( && {
        bin/halvern2 log1 rv3086 flow1 & job=$!
        for i in $(seq 1000); do grep -q 'Reading Trace' log1 && break; sleep .01; done
        kill $job; wait $job; })sh";
    EXPECT_EQ(start("cd " + quoted(folder.path().string()) + script), 1);
    EXPECT_THAT(log, EndsWith("The job was asked to stop.\nJob terminated with error at 'TIME'\n"));
    EXPECT_EQ(scratch_files(), 0u);
}

// A full disk is played by a file size limit (in blocks of 1 KB) that the output runs into.
TEST_F(WholeJob, AFullDiskEndsTheJobInError) {
    const std::vector<SmallTrace> traces(50, {.samples = std::vector<float>(1000, 1.0f)});
    const std::string input = folder.write("in.sgy", small_segy(1000, 1000, traces));
    const std::string flow =
        "$SEGYDINPUT\nFILE=" + input + "\n$SEGYDOUTPUT\nOUTPUTFORMAT=1\nFILE=" + folder.file("out");
    EXPECT_EQ(run(flow, "ulimit -f 100; "), 1);
    EXPECT_THAT(log, HasSubstr("*** ERROR in SEG-Y Disk Output: Cannot "));
    EXPECT_THAT(log, Not(HasSubstr("completed normally")));
}

}  // namespace
