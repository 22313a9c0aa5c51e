#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "inspect/trace_source.h"
#include "native/dataset_bench.h"
#include "native/native_disk_input.h"
#include "segd/image_files.h"
#include "segd/record_bytes.h"
#include "segd/segd_tape_input.h"
#include "segy/segy_disk_input.h"
#include "support/small_segy.h"
#include "tape/image_bytes.h"
#include "tape/image_tools.h"
#include "tape/segy_tape_input.h"
#include "tape/tape_job.h"

namespace halvern {
namespace {

using namespace testing_support;

// A job's item and the front door read the same file: they must see the same in it.
class JobAndCommand : public TapeJob {
protected:
    enum class Words { kNone, kSome };

    /// Reads `path` through the item that `lines` set up, and through the front door.
    template <class Input>
    void compare(const std::string& path, std::vector<std::string> lines, std::size_t count,
                 Words words) {
        SCOPED_TRACE(path);
        run<Input>(std::move(lines));
        EXPECT_EQ(traces.size(), count) << job_log;

        const auto [source, failure] = open_trace_source(path, DefaultHeaderPath());
        ASSERT_TRUE(source) << failure;
        EXPECT_EQ(source->line().samples(), line_samples);
        EXPECT_EQ(source->line().sample_interval().us(), line_interval_us);
        std::size_t read = 0;
        for (; source->next(); ++read) {
            ASSERT_LT(read, traces.size());
            const std::span<const std::byte> header(source->definition().image(),
                                                    kTraceHeaderBytes);
            EXPECT_TRUE(std::ranges::equal(header, traces[read].header)) << "header " << read;
            EXPECT_TRUE(std::ranges::equal(source->floats(), traces[read].samples))
                << "samples of " << read;
        }
        EXPECT_EQ(read, traces.size());
        // What one remarks on, the other does.
        const bool logged = job_log.find("*** WARNING in ") != std::string::npos ||
                            job_log.find("*** ERROR in ") != std::string::npos;
        EXPECT_EQ(logged, words == Words::kSome) << job_log;
        EXPECT_EQ(source->notes().empty(), words == Words::kNone)
            << testing::PrintToString(source->notes());
    }
    void compare_segy_image(const std::string& bytes, std::size_t count, Words words) {
        folder.write("tape.tap", bytes);
        compare<SegyTapeInput>(image, {}, count, words);
    }
    void compare_segd_image(const std::string& bytes, std::size_t count, Words words) {
        folder.write("tape.tap", bytes);
        for (const char* blocked : {"BLOCKED=0", "BLOCKED=1"}) {
            compare<SegdTapeInput>(image, {blocked}, count, words);
        }
    }
};

std::string three_traces() {
    return small_segy(4000, 3,
                      {{.ffid = 1, .channel = 1, .samples = {1, 2, 3}},
                       {.ffid = 1, .channel = 2, .samples = {4, 5, 6}},
                       {.ffid = 1, .channel = 3, .samples = {7, 8, 9}}});
}

TEST_F(JobAndCommand, SegyOnDiskAndDatasets) {
    const auto disk = [&](const std::string& path, std::size_t count, Words words) {
        compare<SegyDiskInput>(path, {"FILE=" + path}, count, words);
    };
    disk(folder.write("whole.sgy", three_traces()), 3, Words::kNone);
    disk(folder.write("cut.sgy", three_traces() + "left over"), 3, Words::kSome);
    DatasetBench dataset;
    ASSERT_TRUE(dataset.write(NativeWriter::Mode::kCreate, 1, 5));
    compare<NativeDiskInput>(dataset.main, {"FILE=" + dataset.main}, 5, Words::kNone);
    for (const auto& [name, count] : {std::pair("marine_shots.segy", std::size_t{480}),
                                      std::pair("poststack_16bit.sgy", std::size_t{414})}) {
        if (const auto path = field_data(name)) disk(*path, count, Words::kSome);
    }
}

TEST_F(JobAndCommand, SegyOnAnImage) {
    const std::string files[] = {folder.write("line.sgy", three_traces()),
                                 folder.write("more.sgy", three_traces())};
    const auto image_of = [&](std::span<const std::string> list) {
        EXPECT_EQ(make_image(list, image, true, split_segy), "");
        return file_bytes(image);
    };
    compare_segy_image(image_of(files), 6, Words::kNone);
    const std::string one = image_of(std::span(files, 1));
    // Traces of 252 bytes in blocks of 260, after headers of 3208 and 408.
    constexpr std::size_t kSecond = 3208 + 408 + 260, kEnd = kSecond + 2 * 260;
    std::string damaged = one;
    damaged[kSecond] = 7;
    const std::string whole = one.substr(0, kEnd);
    compare_segy_image(damaged, 1, Words::kSome);
    compare_segy_image(one.substr(0, kSecond + 99), 1, Words::kSome);
    compare_segy_image(whole + block("short"), 3, Words::kSome);
    compare_segy_image(whole + block("bad", 0x80000000), 3, Words::kSome);
    compare_segy_image(whole + filemark() + block(std::string(3200, 'C')), 3, Words::kSome);
    if (const auto path = field_data("marine_shots.segy")) {
        compare_segy_image(image_of(std::span(&*path, 1)), 480, Words::kSome);
    }
}

TEST_F(JobAndCommand, SegdOnAnImageAndOnDisk) {
    const std::string one = hex("3F800000 40000000 40400000 40800000 40A00000");
    const RecordParts parts{.file = 427,
                            .sets = {{1, 1, 8, hex("0084"), 9}, {2, 2, 8, hex("0004")}}};
    const std::vector<std::string> blocks = {parts.header(), parts.trace(1, 1, one, 1, 5),
                                             parts.trace(2, 1, one, 1, 5),
                                             parts.trace(2, 2, one, 1, 5)};
    std::string record, bytes;
    for (const std::string& each : blocks) record += block(each), bytes += each;
    folder.write("Halvern.segd", "FOLD TE1 7 U1\n");
    compare_segd_image(record + filemark() + record + filemark() + filemark(), 6, Words::kNone);
    compare_segd_image(block(blocks[0]) + block(blocks[1]) + block("lost", 0x80000000) +
                           block(blocks[3]) + filemark(),
                       2, Words::kSome);
    compare_segd_image(record + filemark() + block("nonsense") + filemark() + record, 6,
                       Words::kSome);
    compare_segd_image(record + word(99) + "cut", 3, Words::kSome);
    compare_segd_image(record.substr(0, record.size() - block(blocks[3]).size()) + filemark(), 2,
                       Words::kSome);
    const RecordParts other{.file = 1, .sets = {{1, 1, 8, hex("0000"), 9, 1}, {2, 1, 8}}};
    compare_segd_image(block(other.header()) + block(other.trace(1, 1, one + one)) +
                           block(other.trace(2, 1, hex("7FC00000") + one.substr(4))) + filemark(),
                       1, Words::kSome);

    // A disk file holds what its tape holds.
    std::vector<std::string> files = {folder.write("small.segd", bytes)};
    if (const auto path = field_data("land_record_8058.segd")) files.push_back(*path);
    const auto split = [](const std::string& from, const auto& block_of) {
        return segd::split_records(from, segd::Dialect::kOther, block_of);
    };
    for (const std::string& file : files) {
        ASSERT_EQ(make_image(std::span(&file, 1), image, true, split), "");
        const std::size_t count = file == files.front() ? 3 : 6;
        compare_segd_image(file_bytes(image), count, Words::kNone);
        compare<SegdTapeInput>(file, {}, count, Words::kNone);
    }
}

}  // namespace
}  // namespace halvern
