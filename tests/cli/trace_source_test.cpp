#include "cli/trace_source.h"

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
        .directories = {folder.file("parts")},
        .min_disk_space_mb = 0,
        .max_file_size_mb = 1000,
        .free_space = [](const std::string&) { return std::int64_t{1} << 40; }};
    EXPECT_EQ(writer.open(folder.file("line"), NativeWriter::Mode::kCreate,
                          {.samples = 1, .interval = 256000}, definition, places, "test"),
              1);
    std::vector<std::byte> header(kTraceHeaderBytes), record{std::byte{0x40}, {}, {}, {}};  // 2.0
    header[15] = std::byte{9};                                                              // CHAN
    EXPECT_EQ(writer.write_trace(header, record), 0);
    EXPECT_EQ(writer.finish(), 0);
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
    const std::string twice[] = {segy, segy};
    ASSERT_EQ(make_image(twice, folder.file("tape2"), true, split_segy), "");
    EXPECT_EQ(
        contents(folder.file("tape2")),
        "tape image that holds SEG-Y: 1=1 2=4 3=7; further tape files follow, which are not read");
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
