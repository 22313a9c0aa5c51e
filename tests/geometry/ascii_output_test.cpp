#include "geometry/ascii_output.h"

#include <gmock/gmock.h>

#include "geometry/ascii_input.h"
#include "support/item_bench.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

class AsciiOutputs : public testing::Test {
protected:
    // FFID 7 to 9, CHAN 1, SRCX -120000 and up; what stands in the file afterwards.
    std::string written_file(std::vector<std::string> lines) {
        folder_.write("out.txt", "of an earlier run\n");
        lines.push_back("FILE=" + path_);
        ItemBench<AsciiOutput> bench({.interval_us = 4000, .samples = 3}, lines);
        for (int trace = 0; trace < 3; ++trace) {
            bench.set("FFID", 7 + trace / 2);
            bench.set("CHAN", trace + 1);
            bench.set("SRCX", -120000 + trace);
            bench.process({0.5f, -1.25f, 2e6f});
        }
        EXPECT_EQ(file_bytes(path_), "of an earlier run\n");  // until the end
        bench.finish();
        log_ = bench.log();
        return file_bytes(path_);
    }

    TemporaryFolder folder_;
    std::string path_ = folder_.write("out.txt", "of an earlier run\n");
    std::string log_;
};

TEST_F(AsciiOutputs, WriteALineATrace) {
    EXPECT_EQ(written_file({"COLUMN=FFID,4,0", "COLUMN=SRCX,9,1"}),
              "FFID      SRCX\n   7 -120000.0\n   7 -119999.0\n   8 -119998.0\n"
              "");
    EXPECT_THAT(log_, HasSubstr("Wrote 3 lines"));
    EXPECT_EQ(
        written_file({"COLUMN=SRCX,9,0", "COLUMN=FFID,2,0", "HEADING=0", "CHANGEHEADER=FFID"}),
        "  -120000  7 \n  -119998  8 \n");
}

TEST_F(AsciiOutputs, WriteCommasAndSamples) {
    EXPECT_EQ(written_file(
                  {"COLUMN=FFID,4,0", "SEPARATOR=1", "SAMPLES=1", "START=4", "SAMPLEDECIMALS=2"}),
              "FFID,2,3\n7,-1.25,2000000.00\n7,-1.25,2000000.00\n8,-1.25,2000000.00\n");
    EXPECT_EQ(written_file({"HEADING=0", "SAMPLES=1", "EVERYSAMPLE=2", "SAMPLEWIDTH=6",
                            "SAMPLEDECIMALS=1", "COLUMN=SRCX,3,0"}),
              "***    0.5 ******\n***    0.5 ******\n***    0.5 ******\n");
    EXPECT_THAT(log_, HasSubstr("6 values are wider than their columns"));
}

TEST_F(AsciiOutputs, LeaveTheFileAsItWasWithoutATrace) {
    ItemBench<AsciiOutput> bench({.samples = 1}, {"COLUMN=FFID,4,0", "FILE=" + path_});
    bench.prepare();
    bench.finish();
    EXPECT_EQ(file_bytes(path_), "of an earlier run\n");
    EXPECT_THAT(bench.log(), HasSubstr("is as it was"));
}

TEST_F(AsciiOutputs, AreReadBackByAsciiDataInput) {
    written_file({"COLUMN=CHAN,4,0", "COLUMN=FFID,2,0", "COLUMN=SRCX,9,0", "COLUMN=TRACEID,1,0"});
    ItemBench<AsciiInput> bench(
        {.samples = 1},
        {"FILENAME=" + path_, "INPUTTYPE=1", "MATCHHEADER=0 CHAN 1 4", "DATAHEADER=FFID 6 7",
         "DATAHEADER=SRCX 9 17", "DATAHEADER=TRACEID 19 19"});
    bench.set("CHAN", 1);
    bench.prepare();
    for (const int channel : {3, 1, 2}) {
        bench.set("CHAN", channel);
        bench.set("TRACEID", 9);
        bench.process({0});
        EXPECT_EQ(bench.word("FFID"), 7 + (channel - 1) / 2);
        EXPECT_EQ(bench.word("SRCX"), -120000 + channel - 1);
        EXPECT_EQ(bench.word("TRACEID"), 0);
    }
}

TEST_F(AsciiOutputs, RefuseWhatCannotBeWritten) {
    const struct {
        std::vector<std::string> lines;
        const char* words;
    } kCases[] = {
        {{}, "no column"},
        {{"COLUMN=FFID"}, "'COLUMN=FFID' is no column"},
        {{"COLUMN=FFID,0,0"}, "'FFID' needs a width from 1"},
        {{"COLUMN=FFID,4,x"}, "is no column"},
        {{"COLUMN=NOWORD,4,0"}, "Cannot read header 'NOWORD'"},
        {{"COLUMN=FFID,4,0", "CHANGEHEADER=NOWORD"}, "Cannot read header 'NOWORD'"},
        {{"SAMPLES=1", "START=40"}, "No sample lies"},
        {{"COLUMN=FFID,4,0", "FILE=/no/such/folder/file"}, "Cannot open output file"},
        {{"COLUMN=FFID,4,0", "FILE=NONE"}, "not been properly selected"},
    };
    for (const auto& [lines, words] : kCases) {
        std::vector<std::string> all{"FILE=" + path_};
        all.insert(all.end(), lines.begin(), lines.end());
        ItemBench<AsciiOutput> bench({.samples = 3}, all);
        EXPECT_JOB_ERROR(bench.prepare(), words);
    }
    EXPECT_EQ(file_bytes(path_), "of an earlier run\n");
}

}  // namespace
}  // namespace halvern
