#include <gmock/gmock.h>

#include "native/dataset_bench.h"
#include "native/native_disk_input.h"
#include "native/native_disk_output.h"
#include "support/item_bench.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;

struct OutputBench : DatasetBench {
    // Runs traces through an output item and gives its log.
    std::string run(std::vector<std::string> lines, const std::vector<std::vector<float>>& traces,
                    int interval_us = 4000) {
        lines.push_back("FILE=" + main);
        ItemBench<NativeDiskOutput> bench(
            {.interval_us = interval_us, .samples = static_cast<int>(traces.at(0).size())}, lines);
        bench.item().UsePlaces(places);
        for (const auto& trace : traces) {
            bench.set("FFID", 9);
            bench.process(trace);
        }
        bench.finish();
        return bench.log();
    }
};

TEST(NativeItems, WriteAndReadBackATrace) {
    OutputBench bench;
    const std::string log =
        bench.run({"OUTPUTFORMAT=2", "USETIME=1", "TIME=8"}, {{1, -2, 0.5f, 9}, {3, 3, 3, 3}});
    EXPECT_THAT(log, HasSubstr("Overwriting output file " + bench.main + "\n"));
    EXPECT_THAT(log, HasSubstr("Output type = 16-BIT Integer\n"));
    EXPECT_THAT(log, HasSubstr("The traces will be shortened to 8 msec.\n"));
    NativeReader reader;
    ASSERT_EQ(reader.open(bench.main, 1000, kTestReport), NativeOpening::kOpened);
    EXPECT_EQ(reader.layout().samples, 3);  // 0, 4 and 8 ms
    ASSERT_EQ(reader.read_trace(1), 1);
    const auto word = [&](const char* name) {
        return reader.definition().get_int(reader.definition().find(name));
    };
    EXPECT_EQ(word("FFID"), 9);
    EXPECT_EQ(word("TRNUML"), 2);
    EXPECT_EQ(word("NUMSAMPS"), 3);
    EXPECT_EQ(word("SAMPRATE"), 4000);
    ASSERT_EQ(reader.read_trace(0), 1);
    const auto samples = reader.samples().floats(reader.definition());
    EXPECT_EQ(std::vector<float>(samples.begin(), samples.end()), (std::vector<float>{1, -2, .5f}));
}

TEST(NativeItems, AppendKeepsTheFormatAndComparesTheShape) {
    OutputBench bench;
    bench.run({"OUTPUTFORMAT=0"}, {{1, 2}});
    bench.run({"OUTPUTFORMAT=2", "WRITETYPE=0"}, {{3, 4}});
    NativeReader reader;
    ASSERT_EQ(reader.open(bench.main, 0, kTestReport), NativeOpening::kOpened);
    EXPECT_EQ(reader.layout().format, SampleFormat::kIeee);
    ASSERT_EQ(reader.read_trace(1), 1);
    EXPECT_EQ(reader.definition().get_int(reader.definition().find("TRNUMR")), 2);
    EXPECT_JOB_ERROR(bench.run({"WRITETYPE=0"}, {{1, 2, 3}}),
                     "Number of samples of output file (  2) and new data (  3) differ.\n");
    EXPECT_JOB_ERROR(bench.run({"WRITETYPE=0"}, {{1, 2}}, 2000),
                     "Sample rates of output file (4.0) and new data (2.0) differ.\n");
    EXPECT_EQ(reader.trace_count(), 2);
}

TEST(NativeItems, AppendRefusesTracesOfAnotherDescription) {
    OutputBench bench;
    bench.run({}, {{1, 2}});
    const std::string desc = NativeMain::read(bench.main)->desc_path;
    std::string text = file_bytes(desc);
    const std::size_t place = text.find("FFID       8 1");
    ASSERT_NE(place, std::string::npos);
    text.replace(place, 14, "FFID      12 1");
    bench.folder.write(std::filesystem::relative(desc, bench.folder.path()).string(), text);
    EXPECT_JOB_ERROR(bench.run({"WRITETYPE=0"}, {{3, 4}}),
                     "they differ in the name, the place or the type of 'FFID'");
    EXPECT_EQ(bench.read().size(), 1u);
}

TEST(NativeItems, WhatExistsIsReplacedByTheFirstTraceAndWhatIsNoDatasetNever) {
    OutputBench bench;
    bench.run({}, {{1, 2}});
    const std::string main = file_bytes(bench.main);
    ItemBench<NativeDiskOutput> output({.samples = 2}, {"FILE=" + bench.main});
    output.item().UsePlaces(bench.places);
    output.prepare();
    EXPECT_TRUE(FileLock::take(bench.main, FileLock::Missing::kFault).fault());
    output.finish();
    EXPECT_THAT(output.log(), HasSubstr("nothing was written to '" + bench.main + "'"));
    EXPECT_EQ(file_bytes(bench.main), main);
    EXPECT_EQ(bench.read().size(), 1u);
    for (const std::string& text :
         {std::string("notes"), main.substr(0, main.rfind('\n', main.size() - 2))}) {
        bench.folder.write("line1", text);
        for (const char* type : {"WRITETYPE=0", "WRITETYPE=1"}) {
            EXPECT_JOB_ERROR(bench.run({type}, {{1, 2}}), "The file exists and is kept: it is ");
        }
        EXPECT_EQ(file_bytes(bench.main), text);
    }
}

// A copy of a main file lists the same parts: they would be deleted while the flow reads them.
TEST(NativeItems, AnOutputDoesNotReplaceWhatItsInputReads) {
    OutputBench bench;
    bench.run({}, {{1, 2}});
    const std::string copy = bench.folder.write("copy", file_bytes(bench.main));
    NativeDiskInput input(section_of(FlowItemKind::kNativeDiskInput, {"FILE=" + bench.main}),
                          LogFlag::kQuiet);
    auto output = std::make_unique<NativeDiskOutput>(
        section_of(FlowItemKind::kNativeDiskOutput, {"FILE=" + copy}), LogFlag::kQuiet);
    output->UsePlaces(bench.places);
    input.SetNext(std::move(output));
    EXPECT_JOB_ERROR(input.RunInput(), "is read by this flow.");
    EXPECT_EQ(bench.read().size(), 1u);
}

TEST(NativeItems, RefuseWhatWasNotChosen) {
    OutputBench bench;
    EXPECT_JOB_ERROR(bench.run({"WRITETYPE=2"}, {{1}}),
                     "There is no input file to overwrite.  Change the option in HALVERN DATA DISK "
                     "OUTPUT to OVERWRITE or APPEND.\n");
    EXPECT_JOB_ERROR(bench.run({"USETIME=1", "TIME=-5"}, {{1}}),
                     "User requested output time must be >= 0.  It was entered as -5.");
    bench.main = "/some/where/NONE";
    EXPECT_JOB_ERROR(bench.run({}, {{1}}),
                     "Output file '/some/where/NONE' has not been properly selected\n");
    bench.main = "/no/such/folder/line";
    EXPECT_JOB_ERROR(bench.run({}, {{1}}),
                     "Cannot open output file '/no/such/folder/line'.  Check "
                     "disk space and permissions.\n");
    NativeDiskInput input(section_of(FlowItemKind::kNativeDiskInput, {"FILE=/no/such"}),
                          LogFlag::kQuiet);
    EXPECT_JOB_ERROR(input.RunInput(), "Input file '/no/such' does not exist.\n");
}

}  // namespace
}  // namespace halvern
