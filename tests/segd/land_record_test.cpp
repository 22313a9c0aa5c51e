#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "segd/image_files.h"
#include "segd/record_reader.h"
#include "segd/samples.h"
#include "support/temporary_folder.h"
#include "tape/image_scsi.h"
#include "tape/image_tools.h"
#include "tape/tape_device.h"

namespace halvern::segd {
namespace {

using namespace testing_support;

struct ExpectedTrace {
    int point;  // receiver; line and index are 1
    int sensor;
    float first_five[5];  // as recorded
    double first;         // in millivolts
    float last;
};

// Decoded from the file's bytes with another program.
constexpr ExpectedTrace kTraces[] = {
    {1,
     3,
     {-1680.6845703125f, -2657.6845703125f, -3035.6845703125f, -3269.6845703125f,
      -3660.6845703125f},
     -0.113313209,
     -2343.6845703125f},
    {1,
     4,
     {2494.168701171875f, 3925.168701171875f, 4999.1689453125f, 5560.1689453125f, 5490.1689453125f},
     0.168159014,
     -4005.831298828125f},
    {1,
     2,
     {-1865.6907958984375f, -2257.69091796875f, -2300.69091796875f, -2037.6907958984375f,
      -1553.6907958984375f},
     -0.125786489,
     -492.6908264160156f},
    {2,
     3,
     {358.75054931640625f, 127.75056457519531f, -175.2494354248047f, -426.24945068359375f,
      -515.2494506835938f},
     0.024187273,
     1418.7506103515625f},
    {2,
     4,
     {-1111.0604248046875f, -2850.060546875f, -4319.060546875f, -5357.060546875f, -5821.060546875f},
     -0.074908656,
     4517.939453125f},
    {2,
     2,
     {-2478.916748046875f, -5147.9169921875f, -7674.9169921875f, -9075.9169921875f,
      -9577.9169921875f},
     -0.167130714,
     1941.083251953125f},
};

void expect_the_record(BlockSource& source, bool blocked) {
    RecordReader reader(source, Dialect::kOther, blocked);
    ASSERT_EQ(reader.next_record(), RecordReader::Record::kRecord);
    EXPECT_EQ(reader.header().file_number(), 1);
    EXPECT_EQ(reader.header().traces(), 6);
    std::vector<float> raw(4001), descaled(4001);
    for (int number = 1; const ExpectedTrace& expected : kTraces) {
        SCOPED_TRACE(number);
        ASSERT_EQ(reader.next_trace(), RecordReader::Next::kTrace);
        const Trace& trace = reader.trace();
        EXPECT_EQ(trace.header.trace_number, number++);
        ASSERT_EQ(trace.samples, 4001);
        ASSERT_EQ(trace.raw.size(), 16004u);
        EXPECT_EQ(trace.extensions.size(), 7u * 32);
        ASSERT_TRUE(trace.receiver);
        EXPECT_EQ(trace.receiver->receiver_line, 1);
        EXPECT_EQ(trace.receiver->receiver_point, expected.point);
        EXPECT_EQ(trace.receiver->receiver_index, 1);
        EXPECT_EQ(trace.receiver->sensor, expected.sensor);
        decode(8058, trace.raw, 1, raw);
        EXPECT_TRUE(std::equal(std::begin(expected.first_five), std::end(expected.first_five),
                               raw.begin()));
        EXPECT_EQ(raw.back(), expected.last);
        decode(8058, trace.raw, trace.set->descale, descaled);
        EXPECT_NEAR(descaled[0], expected.first, 1e-8);  // half a float's step, and a digit
        if (number == 2) {  // of trace 1: its extremes and where they are
            EXPECT_EQ(std::ranges::min_element(raw) - raw.begin(), 2178);
            EXPECT_EQ(raw[2178], -137975.6875f);
            EXPECT_EQ(std::ranges::max_element(raw) - raw.begin(), 2160);
            EXPECT_EQ(raw[2160], 133744.3125f);
        }
    }
    EXPECT_EQ(reader.next_trace(), RecordReader::Next::kEndOfRecord);
    EXPECT_EQ(reader.left_over(), 0);
    EXPECT_EQ(reader.next_record(), RecordReader::Record::kEnd);
}

TEST(LandRecord, ReadsFromDiskAndFromAnImageAndComesBackTheSame) {
    const std::optional<std::string> path = field_data("land_record_8058.segd");
    if (!path) GTEST_SKIP();
    std::optional<FileBlockSource> file = FileBlockSource::open(*path);
    ASSERT_TRUE(file);
    expect_the_record(*file, true);

    const TemporaryFolder folder;
    const std::string image = folder.file("land.tap");
    const auto split = [](const std::string& from, const auto& block) {
        return split_records(from, Dialect::kOther, block);
    };
    ASSERT_EQ(make_image(std::span(&*path, 1), image, false, split), "");
    for (const bool blocked : {false, true}) {
        TapeDevice device(image,
                          [&] { return std::make_unique<ImageScsi>(image, TapeUse::kRead); });
        ASSERT_EQ(device.open(), 0);
        TapeBlockSource tape(device);
        expect_the_record(tape, blocked);
    }
    std::vector<std::string> made;
    std::int64_t bad_blocks = 0;
    ASSERT_EQ(extract_image(image, folder.path().string(), "r", ".segd", made, bad_blocks), "");
    ASSERT_EQ(made.size(), 1u);
    EXPECT_EQ(file_bytes(made[0]), file_bytes(*path));
}

}  // namespace
}  // namespace halvern::segd
