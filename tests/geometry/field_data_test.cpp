// The marine line: what its trace headers already carry against what its SPS files, and column
// files made of the headers, bring back.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "geometry/ascii_input.h"
#include "geometry/merge_p1.h"
#include "geometry/merge_sps.h"
#include "geometry/write_coordinates.h"
#include "segy/segy_reader.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;

constexpr const char* kWords[] = {"FFID", "CHAN", "SRCX", "SRCY", "RECX", "RECY", "OFFSET"};

class MarineLine : public testing::Test {
protected:
    void SetUp() override {
        const auto segy = field_data("marine_shots.segy");
        if (!segy) GTEST_SKIP();
        ASSERT_EQ(reader.open(*segy, {.header_path = HALVERN_SOURCE_DIR "/header/default"}),
                  SegyOpening::kOpened);
        while (reader.read_next() == 1) {
            auto& trace = traces.emplace_back();
            for (std::size_t i = 0; i < std::size(kWords); ++i) trace[i] = word(kWords[i]);
        }
        ASSERT_EQ(traces.size(), 480u);
    }
    double word(const char* name) {
        return reader.definition().get_double(reader.definition().find(name));
    }
    /// Sends every trace through the item with all words but the first `kept` emptied, and compares
    /// them with what the file has.
    void expect_restored(FlowItem& item, std::size_t kept, bool merged = false) {
        item.PrepareRun(reader.line(), reader.definition(), reader.samples(), 480);
        for (std::size_t i = 0; i < traces.size(); ++i) {
            ASSERT_EQ(reader.read_trace(static_cast<std::int64_t>(i)), 1);
            for (std::size_t k = kept; k < std::size(kWords); ++k) {
                reader.definition().set_double(reader.definition().find(kWords[k]), -1);
            }
            ASSERT_EQ(item.ProcessTrace(reader.line(), reader.definition(), reader.samples()),
                      kPassOn);
            for (std::size_t k = 0; k < std::size(kWords); ++k) {
                // A merged offset has no sign.
                const double wanted = merged && k == 6 ? std::abs(traces[i][k]) : traces[i][k];
                EXPECT_EQ(word(kWords[k]), wanted) << "trace " << i << ", " << kWords[k];
            }
        }
        item.EndRun();
    }
    LogCapture log;
    TemporaryFolder folder;
    SegyReader reader;
    std::vector<std::array<double, std::size(kWords)>> traces;
};

TEST_F(MarineLine, MergeGivesTheGeometryOfTheHeaders) {
    const auto s = field_data("marine_shots.s"), r = field_data("marine_shots.r"),
               x = field_data("marine_shots.x");
    ASSERT_TRUE(s && r && x);
    MergeSps item({.lines = {"SOURCEFILE=" + *s, "RECEIVERFILE=" + *r, "RELATIONFILE=" + *x}},
                  LogFlag::kLog);
    expect_restored(item, 2, true);
}

TEST_F(MarineLine, AP1FileOfTheHeadersBringsThemBack) {
    WriteCoordinates writer({.lines = {"TYPE=1", "FILE=" + folder.file("line")}}, LogFlag::kLog);
    writer.PrepareRun(reader.line(), reader.definition(), reader.samples(), 480);
    std::vector<std::string> images;
    const auto image = [&] {
        return std::string(reinterpret_cast<const char*>(reader.definition().image()), 240);
    };
    for (std::size_t i = 0; i < traces.size(); ++i) {
        ASSERT_EQ(reader.read_trace(static_cast<std::int64_t>(i)), 1);
        writer.ProcessTrace(reader.line(), reader.definition(), reader.samples());
        images.push_back(image());
    }
    writer.EndRun();
    MergeP1 merge({.lines = {"FILE=" + folder.file("line.p190")}}, LogFlag::kLog);
    merge.PrepareRun(reader.line(), reader.definition(), reader.samples(), 480);
    for (std::size_t i = 0; i < traces.size(); ++i) {
        ASSERT_EQ(reader.read_trace(static_cast<std::int64_t>(i)), 1);
        for (const char* name : {"SRCX", "SRCY", "RECX", "RECY", "COORSCAL"}) {
            reader.definition().set_double(reader.definition().find(name), -1);
        }
        ASSERT_EQ(merge.ProcessTrace(reader.line(), reader.definition(), reader.samples()),
                  kPassOn);
        ASSERT_EQ(word("COORUNIT"), 1);  // lengths; the file says degrees
        reader.definition().set_double(reader.definition().find("COORUNIT"), 3);
        EXPECT_EQ(image(), images[i]) << i;
    }
}

TEST_F(MarineLine, ColumnFilesBringTheHeadersBack) {
    std::vector<std::string> lines;
    for (const auto& trace : traces) {
        std::string& line = lines.emplace_back();
        for (const double value : trace) {
            const std::string digits = std::to_string(static_cast<int>(value));
            line += std::string(10 - digits.size(), ' ') + digits;
        }
        line += '\n';
    }
    const auto item_of = [&](const char* name, std::vector<std::string> section) {
        std::string text;
        for (const std::string& line : lines) text += line;
        section.push_back("FILENAME=" + folder.write(name, text));
        for (std::size_t i = 0; i < std::size(kWords); ++i) {
            const AsciiField field{.name = kWords[i],
                                   .first_column = static_cast<int>(i) * 10 + 1,
                                   .last_column = static_cast<int>(i) * 10 + 10};
            section.push_back(i < 2 ? "MATCHHEADER=" + field.match_text()
                                    : "DATAHEADER=" + field.data_text());
        }
        return std::make_unique<AsciiInput>(FlowSection{.lines = section}, LogFlag::kLog);
    };
    expect_restored(*item_of("in-order", {"INPUTTYPE=0"}), 0);
    std::ranges::shuffle(lines, std::mt19937(5));
    const auto update = item_of("shuffled", {"INPUTTYPE=1"});
    expect_restored(*update, 2);
    EXPECT_EQ(update->matched(), 480);
}

}  // namespace
}  // namespace halvern
