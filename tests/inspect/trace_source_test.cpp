#include "inspect/trace_source.h"

#include <gtest/gtest.h>

#include "native/native_writer.h"
#include "support/log_capture.h"
#include "support/small_segy.h"
#include "support/temporary_folder.h"
#include "tape/image_tools.h"

namespace halvern {
namespace {

using testing_support::field_data;
using testing_support::file_bytes;
using testing_support::small_segy;
using testing_support::TemporaryFolder;

const std::string kHeader = HALVERN_SOURCE_DIR "/header/default";
constexpr std::size_t kRecord = 240 + 3 * 4;

std::string three_traces() {
    return small_segy(4000, 3,
                      {{.channel = 1, .samples = {1, 2, 3}},
                       {.channel = 2, .samples = {4, 5, 6}},
                       {.channel = 3, .samples = {7, 8, 9}}});
}

/// "kind: CHAN=first sample ...", or "failed: why".
std::string contents(const std::string& path) {
    const auto [source, failure] = open_trace_source(path, kHeader);
    if (!source) return "failed: " + failure;
    std::string text = source->kind() + ":";
    const int channel = source->definition().find("CHAN");
    while (source->next()) {
        text += ' ' + std::to_string(source->definition().get_int(channel)) + '=' +
                std::to_string(static_cast<int>(source->floats()[0]));
    }
    const std::string ending = source->ended_early();
    return text + (ending.empty() ? "" : "; " + ending);
}

std::string write_dataset(const TemporaryFolder& folder) {
    const testing_support::LogCapture quiet;
    TraceHeaderDefinition definition;
    EXPECT_EQ(definition.load(kHeader), 0);
    NativeWriter writer;
    const NativePlaces places{
        .roots = {folder.path().string()},
        .prospect = "parts",
        .min_disk_space_mb = 0,
        .max_file_size_mb = 1000,
        .free_space = [](const std::string&) { return std::int64_t{1} << 40; }};
    EXPECT_EQ(writer.open({.path = folder.file("line"), .existing = {}, .lock = {}},
                          NativeWriter::Mode::kCreate,
                          {.samples = 1, .interval = SampleInterval::of_ms(4)}, definition, places,
                          testing_support::kTestReport),
              1);
    std::vector<std::byte> header(kTraceHeaderBytes), record{std::byte{0x40}, {}, {}, {}};  // 2.0
    header[15] = std::byte{9};                                                              // CHAN
    EXPECT_EQ(writer.write_trace(header, record), 0);
    EXPECT_FALSE(writer.finish());
    return folder.file("line");
}

// The name of a file says nothing: all are called alike.
TEST(TraceSource, TellsKindsByTheirBytes) {
    const TemporaryFolder folder;
    const std::string segy = folder.write("x", three_traces());
    EXPECT_EQ(contents(segy), "SEG-Y file: 1=1 2=4 3=7");
    EXPECT_EQ(contents(write_dataset(folder)), "native dataset: 9=2");
    const std::string files[] = {segy};
    ASSERT_EQ(make_image(files, folder.file("tape"), true, split_segy), "");
    EXPECT_EQ(contents(folder.file("tape")), "tape image that holds SEG-Y: 1=1 2=4 3=7");
}

// On the image the blocks of 3200 and 400 bytes begin at 0 and 3208, the traces of 252 at 3616,
// 3876 and 4136; the first tape file ends at 4400. A damaged block has the top bit of both of its
// lengths set.
TEST(TraceSource, ReadsATapeImageAsFarAsItCanAndSaysHowFar) {
    const TemporaryFolder folder;
    const std::string segy = folder.write("a", three_traces());
    const std::string other = folder.write("b", small_segy(4000, 2, {{.samples = {1, 2}}}));
    const auto image_of = [&](const std::vector<std::string>& files) {
        EXPECT_EQ(make_image(files, folder.file("tape"), true, split_segy), "");
        return file_bytes(folder.file("tape"));
    };
    const std::string one = image_of({segy});
    const auto damaged = [](std::string image, std::size_t at, std::size_t length) {
        for (const std::size_t word : {at, at + 4 + length}) image[word + 3] |= '\x80';
        return image;
    };
    std::string disagree = one;
    disagree[3876] = 7;
    const std::pair<std::string, const char*> kCases[] = {
        {image_of({segy, segy}), "1=1 2=4 3=7 1=1 2=4 3=7"},
        {image_of({segy, other}), "3=7; a further line header does not fit"},
        {damaged(one, 3876, 252), ": 1=1; the block at byte 3876 is marked as bad; nothing"},
        {damaged(one, 0, 3200), "as SEG-Y: the block at byte 0 is marked as bad"},
        {one.substr(0, 4000), ": 1=1; the record at byte 3876 is cut short; nothing"},
        {disagree, ": 1=1; the record at byte 3876 has two lengths that disagree"}};
    for (const auto& [bytes, words] : kCases) {
        const std::string text = contents(folder.write("tape", bytes));
        EXPECT_NE(text.find(words), std::string::npos) << text;
    }
}

TEST(TraceSource, SaysWhenAFileShrinksWhileItIsRead) {
    // Larger than what is read ahead.
    const std::string large =
        small_segy(4000, 30'000, std::vector<testing_support::SmallTrace>(99));
    for (const std::string kind : {"segy", "dataset", "image"}) {
        const TemporaryFolder folder;
        std::string path = kind == "dataset" ? write_dataset(folder) : folder.write("x", large);
        if (const std::string files[] = {path}; kind == "image") {
            path = folder.file("tape");
            ASSERT_EQ(make_image(files, path, true, split_segy), "");
        }
        const auto source = open_trace_source(path, kHeader).source;
        ASSERT_TRUE(source);
        for (const auto& file : std::filesystem::recursive_directory_iterator(folder.path())) {
            if (file.is_regular_file()) std::filesystem::resize_file(file, 0);
        }
        while (source->next()) {
        }
        EXPECT_NE(source->ended_early().find("has become shorter"), std::string::npos) << path;
    }
}

TEST(TraceSource, SaysWhatAFileIsNot) {
    const TemporaryFolder folder;
    std::string swapped = three_traces();
    for (std::size_t at = 3200; at < 3300; at += 2) std::swap(swapped[at], swapped[at + 1]);
    std::string junk(5000, '\0');
    for (std::size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>(i * i * 31 >> 3);
    const std::pair<std::string, const char*> kCases[] = {
        {folder.file("missing"), "there is no file"},
        {folder.path().string(), "is a directory"},
        {folder.write("empty", ""), "is empty"},
        {folder.write("short", "KDFI"), "holds 4 bytes"},
        {folder.write("magic", "KDFILE001\n"), "main file"},
        {folder.write("junk", junk), "of no kind that is known"},
        {folder.write("swapped", swapped), "wrong way round"}};
    for (const auto& [path, words] : kCases) {
        EXPECT_NE(contents(path).find(words), std::string::npos) << contents(path);
    }
    const std::string path = folder.write("x", three_traces());
    EXPECT_NE(open_trace_source(path, folder.file("none")).failure.find("header description"),
              std::string::npos);
}

TEST(TraceSource, ACutFileGivesItsWholeTraces) {
    const TemporaryFolder folder;
    const std::string whole = three_traces();
    for (std::size_t length = 1; length < whole.size(); length += 37) {
        const std::string text = contents(folder.write("cut", whole.substr(0, length)));
        if (length < 3600) {
            EXPECT_TRUE(text.starts_with("failed")) << length << text;
            continue;
        }
        const auto traces = static_cast<std::ptrdiff_t>((length - 3600) / kRecord);
        EXPECT_EQ(std::count(text.begin(), text.end(), '='), traces) << length;
    }
}

// Figures from the data's description: one channel set of IEEE floats, 1 ms, all headers first.
TEST(TraceSource, ReadsASegdDiskFileWholeOrCut) {
    const auto path = field_data("land_record_8058.segd");
    if (!path) GTEST_SKIP();
    const TemporaryFolder folder;
    const std::string whole = file_bytes(*path);
    const auto count = [&](const std::string& file) {
        const auto [source, failure] = open_trace_source(file, kHeader);
        int traces = 0;
        while (source && source->next()) traces += !source->floats().empty();
        return traces;
    };
    EXPECT_EQ(count(*path), 6);
    for (const std::size_t length : {20u, 200u, 2000u, 20'000u, 60'000u}) {
        EXPECT_LE(count(folder.write("cut.segd", whole.substr(0, length))), 6) << length;
    }
}

TEST(TraceSource, HeadersAloneHaveNoSamples) {
    const TemporaryFolder folder;
    const auto source = open_trace_source(folder.write("x", three_traces()), kHeader).source;
    ASSERT_TRUE(source);
    source->set_samples_wanted(false);
    ASSERT_TRUE(source->move_to(2));
    ASSERT_TRUE(source->next());
    EXPECT_EQ(source->samples().stored_count(), 0);
    EXPECT_EQ(source->definition().get_int(source->definition().find("CHAN")), 3);
    EXPECT_FALSE(source->next());
}

}  // namespace
}  // namespace halvern
