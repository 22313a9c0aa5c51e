#include <gmock/gmock.h>

#include <cstdlib>

#include "native/dataset_bench.h"
#include "platform/detached_process.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using Mode = NativeWriter::Mode;
namespace fs = std::filesystem;

TEST(NativeDataset, KeepsTracesInOrderAndAppends) {
    DatasetBench bench;
    EXPECT_TRUE(bench.write(Mode::kAppend, 0, 3));  // nothing to append to: created
    EXPECT_TRUE(bench.write(Mode::kAppend, 3, 250));
    EXPECT_EQ(bench.read(), numbers(0, 253));
    EXPECT_EQ(bench.parts(), 4u);
    const auto main = NativeMain::read(bench.main);
    ASSERT_TRUE(main);
    EXPECT_EQ(file_bytes(main->line_path), "NUMSAMPLES=4\nSAMPLERATE=256000\nDATAFORMAT=0\n");
    // The last of the configured file systems comes first.
    EXPECT_THAT(main->segments[0].head_path, HasSubstr("disk2"));
    EXPECT_EQ(fs::file_size(main->segments[0].head_path), 253u * 240u);
    EXPECT_EQ(fs::file_size(main->segments[0].data_path), 253u * 16u);
    EXPECT_THAT(bench.log.text(), HasSubstr("Statistics:\n  Actual Number of Samples:   4\n"
                                            "  Sample Rate:                4.0\n"
                                            "  Data Format:                IEEE FLOAT\n"
                                            "  Number of Traces:           253\n"));
}

TEST(NativeDataset, GoesOnInANewPairWhenTheFileOrTheDiskIsFull) {
    DatasetBench bench;
    bench.places.max_file_size_mb = 0;  // full at every look, which comes every 100 traces
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 250));
    EXPECT_EQ(NativeMain::read(bench.main)->segments.size(), 3u);
    EXPECT_EQ(bench.read(), numbers(0, 250));
    NativeReader reader;
    ASSERT_EQ(reader.open(bench.main, 0, kTestReport), NativeOpening::kOpened);
    for (const int index : {249, 0, 100, 99, 200}) {
        ASSERT_EQ(reader.read_trace(index), 1);
        EXPECT_EQ(DatasetBench::number(reader), index % 256);
    }
    EXPECT_EQ(reader.read_trace(250), 0);

    // By hand: 60 MB must be exceeded to begin; 50 MB and 100 records of 256 bytes to go on.
    DatasetBench tight;
    tight.free_bytes = 60'000'000;
    EXPECT_FALSE(tight.write(Mode::kCreate, 0, 1));
    EXPECT_THAT(tight.log.text(), HasSubstr("Error in Halvern Data Output.  No selected file "
                                            "systems have enough disk space to create data "
                                            "files.\n"));
    EXPECT_EQ(tight.parts(), 0u);
    tight.free_bytes = 60'000'001;
    EXPECT_TRUE(tight.write(Mode::kCreate, 0, 1));
    tight.free_bytes = 50'025'600;
    EXPECT_TRUE(tight.places.has_room(tight.main, 0, 256));
    tight.free_bytes = 50'025'599;
    EXPECT_FALSE(tight.places.has_room(tight.main, 0, 256));
}

TEST(NativeDataset, ADiskThatFillsUpKeepsWhatWasWritten) {
    DatasetBench bench;
    int looks = 0;
    bench.places.free_space = [&](const std::string&) {
        return ++looks <= 4 ? std::int64_t{1} << 40 : std::int64_t{0};
    };
    EXPECT_FALSE(bench.write(Mode::kCreate, 0, 500));
    EXPECT_EQ(bench.read(), numbers(0, 200));
}

TEST(NativeDataset, OverwritingDeletesTheOldPartsAndNothingElse) {
    DatasetBench bench;
    bench.places.max_file_size_mb = 0;
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 150));
    const std::string bystander = bench.folder.write("disk2/rv/data/DATAbase", "keep");
    NativeMain main = *NativeMain::read(bench.main);
    main.segments.push_back({bystander, bystander});
    ASSERT_FALSE(main.write(bench.main));
    EXPECT_TRUE(bench.write(Mode::kCreate, 7, 1));
    EXPECT_EQ(bench.read(), numbers(7, 1));
    EXPECT_EQ(bench.parts(), 5u);
    EXPECT_THAT(bench.log.text(), HasSubstr("listed are kept (2)"));
    EXPECT_EQ(file_bytes(bystander), "keep");
}

// A job of the same second draws the same numbers, which are free when the old files are gone.
TEST(NativeDataset, ReplacingDeletesNoPartThatItHasJustMade) {
    DatasetBench bench;
    for (int first : {0, 7}) {
        std::srand(1);
        EXPECT_TRUE(bench.write(Mode::kCreate, first, 2));
        EXPECT_EQ(bench.read(), numbers(first, 2));
        const NativeMain main = *NativeMain::read(bench.main);
        if (first == 0) {
            for (const std::string& part : main.paths()) fs::remove(part);
        }
    }
}

TEST(NativeDataset, FilesGoOnlyToADataDirectoryThatIsThere) {
    DatasetBench bench;
    const std::string plain = bench.folder.write("plain", "");
    bench.places.roots = {bench.places.roots[0], plain, bench.folder.file("unmounted")};
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 2));
    EXPECT_FALSE(fs::exists(bench.folder.file("unmounted")));
    EXPECT_FALSE(bench.places.obstacle());
    bench.places.roots.erase(bench.places.roots.begin());
    EXPECT_TRUE(bench.places.obstacle());
    EXPECT_FALSE(bench.write(Mode::kCreate, 0, 2));
    EXPECT_THAT(bench.log.text(), HasSubstr("plain' is no directory.\n"));
}

TEST(NativeDataset, WritesOnlyToPartsOfDatasets) {
    DatasetBench bench;
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 2));
    const NativeMain main = *NativeMain::read(bench.main);
    const std::string outside = bench.folder.write("letters/DATA1", std::string(32, 'x'));
    const std::string link = fs::path(main.desc_path).parent_path().string() + "/DATA2";
    fs::create_symlink(outside, link);
    for (const std::string& data : {outside, link, main.line_path, main.segments[0].head_path}) {
        NativeMain other = main;
        other.segments[0].data_path = data;
        ASSERT_FALSE(other.write(bench.main));
        const std::string before = file_bytes(data);
        for (const Mode mode : {Mode::kAppend, Mode::kOverwrite}) {
            EXPECT_FALSE(bench.write(mode, 5, 1)) << data;
        }
        EXPECT_EQ(file_bytes(data), before);
    }
    EXPECT_THAT(bench.log.text(), HasSubstr("DATA1', which is no DATA file of a prospect in a "));
}

TEST(NativeDataset, WhatKilledWritersLeaveGoesWithItsOwnParts) {
    DatasetBench bench;
    bench.main = bench.folder.file("disk2/rv/data/line1");
    fs::create_directories(bench.folder.file("disk2/rv/data"));
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 2));
    const std::string kept = file_bytes(bench.main);
    const std::string second = bench.folder.file("disk2/rv/data/line2");
    const auto left_by = [&](const std::string& owner) {
        bench.main = second;
        EXPECT_TRUE(bench.write(Mode::kCreate, 0, 2));
        fs::rename(second, second + ".new" + owner);
    };
    left_by("999999999");  // beyond every process number
    NativeMain shared = *NativeMain::read(second + ".new999999999");
    shared.segments.push_back(
        NativeMain::read(bench.folder.file("disk2/rv/data/line1"))->segments[0]);
    ASSERT_FALSE(shared.write(second + ".new999999999"));
    left_by(std::to_string(current_process_id()));
    bench.folder.write("disk2/rv/data/notes.new999999999", "no dataset");
    bench.folder.write("disk2/rv/data/HEAD5", "unlisted");
    EXPECT_EQ(bench.parts(), 17u);  // 4 parts and a main file of three, and the last two

    remove_abandoned_datasets(bench.places, kTestReport);
    EXPECT_EQ(bench.parts(), 12u);
    EXPECT_FALSE(fs::exists(second + ".new999999999"));
    bench.main = bench.folder.file("disk2/rv/data/line1");
    EXPECT_EQ(bench.read(), numbers(0, 2));
}

TEST(NativeDataset, OverwritesInPlaceAcrossSegmentsAndNotBeyond) {
    DatasetBench bench;
    bench.places.max_file_size_mb = 0;
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 150));
    EXPECT_TRUE(bench.write(Mode::kOverwrite, 50, 120));
    auto expected = numbers(50, 120);
    for (int n = 120; n < 150; ++n) expected.push_back(n);
    EXPECT_EQ(bench.read(), expected);
    EXPECT_FALSE(bench.write(Mode::kOverwrite, 0, 151));
    bench.main = bench.folder.file("none");
    EXPECT_FALSE(bench.write(Mode::kOverwrite, 0, 1));
    EXPECT_THAT(bench.log.text(), HasSubstr("Bad input file.  Not file to overwrite.\n"));
}

// What a kill leaves: the pair's files end at different traces, or within one.
TEST(NativeDataset, APairOfUnequalLengthReadsAsTheShorterAndAppendsThere) {
    for (const auto& [head, data] : {std::pair{10 * 240 + 7, 12 * 16}, {12 * 240, 10 * 16 + 15}}) {
        DatasetBench bench;
        EXPECT_TRUE(bench.write(Mode::kCreate, 0, 12));
        const NativeSegment segment = NativeMain::read(bench.main)->segments[0];
        fs::resize_file(segment.head_path, static_cast<std::uintmax_t>(head));
        fs::resize_file(segment.data_path, static_cast<std::uintmax_t>(data));
        EXPECT_EQ(bench.read(), numbers(0, 10));
        EXPECT_THAT(bench.log.text(), HasSubstr("2 headers of"));
        EXPECT_TRUE(bench.write(Mode::kAppend, 10, 5));
        EXPECT_EQ(bench.read(), numbers(0, 15));
    }
}

TEST(NativeDataset, WhatIsBrokenIsRefused) {
    DatasetBench bench;
    EXPECT_TRUE(bench.write(Mode::kCreate, 0, 3));
    const std::string main = file_bytes(bench.main);
    const NativeMain parts = *NativeMain::read(bench.main);
    for (std::size_t length = 0; length < main.size(); ++length) {
        bench.folder.write("line1", main.substr(0, length));
        const std::vector<int> traces = bench.read();
        EXPECT_TRUE(traces == std::vector<int>{-2} || traces.empty() || traces == numbers(0, 3))
            << "cut to " << length;
    }
    bench.folder.write("line1", main);
    for (const std::string& part : parts.paths()) {
        fs::rename(part, part + "x");
        EXPECT_THAT(bench.read(), ElementsAre(-2)) << part;
        fs::rename(part + "x", part);
    }
    for (const char* line : {"", "NUMSAMPLES=-1\nSAMPLERATE=256000\nDATAFORMAT=0\n",
                             "NUMSAMPLES=32768\nSAMPLERATE=256000\nDATAFORMAT=0\n",
                             "NUMSAMPLES=4\nSAMPLERATE=4194304\nDATAFORMAT=0\n",
                             "NUMSAMPLES=4\nSAMPLERATE=63\nDATAFORMAT=0\n",
                             "NUMSAMPLES=4\nSAMPLERATE=256000\nDATAFORMAT=3\n"}) {
        bench.folder.write(fs::relative(parts.line_path, bench.folder.path()).string(), line);
        EXPECT_THAT(bench.read(), ElementsAre(-2)) << line;
    }
    bench.folder.write(fs::relative(parts.line_path, bench.folder.path()).string(),
                       "DATAFORMAT=0\r\nSAMPLERATE=256000\r\nNUMSAMPLES=4\r\n");
    EXPECT_EQ(bench.read(), numbers(0, 3));

    NativeMain longest = parts;
    longest.line_path = std::string(NativeMain::kLongestPath, 'x');
    EXPECT_FALSE(longest.write(bench.main));
    EXPECT_EQ(NativeMain::read(bench.main)->line_path, longest.line_path);
    longest.line_path += 'x';
    EXPECT_TRUE(longest.write(bench.main));
}

}  // namespace
}  // namespace halvern
