#include "synthetic/synthesize_files.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <span>
#include <string>

#include "geometry/p1_file.h"
#include "geometry/sps_data_set.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"
#include "synthetic/synthesize_trace.h"
#include "trace/big_endian.h"
#include "trace/codecs.h"
#include "trace/ebcdic.h"

namespace halvern::synthetic {
namespace {

using testing_support::file_bytes;
using testing_support::kTestReport;
using testing_support::TemporaryFolder;

std::string standard_header() { return std::string(HALVERN_SOURCE_DIR) + "/header/default"; }

/// Fields of a SEG-Y trace, by the offsets of the standard.
struct TraceBytes {
    std::span<const std::byte> bytes;
    int i4(std::size_t at) const { return get_i32(bytes.subspan(at).first<4>()); }
    int i2(std::size_t at) const { return get_i16(bytes.subspan(at).first<2>()); }
};

TEST(SyntheticFiles, AllThreeFormatsHoldTheTraces) {
    const TemporaryFolder folder;
    const SyntheticLine line{.shots = 3, .channels = 5, .samples = 101, .interval_us = 4000};
    struct Case {
        SampleFormat format;
        int code;
        std::size_t sample_bytes;
        double relative;  // of the trace's largest sample: 24 bits less 3, 15 bits less 1
    };
    for (const Case& c : {Case{SampleFormat::kIeee, 5, 4, 0}, Case{SampleFormat::kIbm, 1, 4, 1e-6},
                          Case{SampleFormat::kInt16, 3, 2, 1.0 / 16383}}) {
        SCOPED_TRACE(c.code);
        const std::string path = folder.file("line.sgy");
        const auto failure = write_line(
            line, {.segy = path, .format = c.format, .header_definition = standard_header()});
        ASSERT_FALSE(failure) << failure.reason();
        const std::string text = file_bytes(path);
        const auto bytes = std::as_bytes(std::span(text));
        const std::size_t record = 240 + 101 * c.sample_bytes;
        ASSERT_EQ(bytes.size(), 3600 + 15 * record);
        EXPECT_EQ(ebcdic_to_ascii(bytes[0]), std::byte{'C'});
        EXPECT_EQ(get_i16(bytes.subspan<3216, 2>()), 4000);
        EXPECT_EQ(get_i16(bytes.subspan<3220, 2>()), 101);
        EXPECT_EQ(get_i16(bytes.subspan<3224, 2>()), c.code);
        const TraceMaker maker(line);
        std::vector<float> drawn(101), read(101);
        for (int i = 0; i < 15; ++i) {
            const auto trace = bytes.subspan(3600 + static_cast<std::size_t>(i) * record, record);
            maker.make(i / 5, i % 5, drawn);
            const auto raw = trace.subspan(240);
            if (c.code == 5) decode_ieee(raw, read);
            if (c.code == 1) decode_ibm(raw, read);
            if (c.code == 3) decode_int16(raw, std::ldexp(1.0, -TraceBytes{trace}.i2(168)), read);
            double largest = 0;
            for (const float sample : drawn) largest = std::max<double>(largest, std::fabs(sample));
            for (std::size_t k = 0; k < 101; ++k) {
                ASSERT_NEAR(read[k], drawn[k], largest * c.relative) << "trace " << i << ", " << k;
            }
        }
    }
}

// What SPS leads a trace's FFID and CHAN to is what its header says, word by word.
TEST(SyntheticFiles, SpsAgreesWithTheHeaders) {
    const TemporaryFolder folder;
    for (const int gap : {0, 2}) {
        const SyntheticLine line{.shots = 7,
                                 .channels = 12,
                                 .samples = 10,
                                 .spacing_m = 25,
                                 .gap = gap,
                                 .first_ffid = 501,
                                 .statics_ms = 12};
        const LineFiles files{.segy = folder.file("line.sgy"),
                              .format = SampleFormat::kIbm,
                              .sps = folder.file("line"),
                              .header_definition = standard_header()};
        const auto failure = write_line(line, files);
        ASSERT_FALSE(failure) << failure.reason();
        SpsDataSet sps(kTestReport);
        ASSERT_EQ(sps.read_sources(files.sps + ".s"), 0);
        ASSERT_EQ(sps.read_receivers(files.sps + ".r"), 0);
        ASSERT_EQ(sps.read_relations(files.sps + ".x"), 0);
        ASSERT_EQ(sps.prepare(), 0);
        const std::string text = file_bytes(files.segy);
        const auto bytes = std::as_bytes(std::span(text));
        for (std::size_t i = 0; i < 7 * 12; ++i) {
            const TraceBytes trace{bytes.subspan(3600 + i * 280, 280)};
            EXPECT_EQ(trace.i4(8), 501 + static_cast<int>(i / 12));  // FFID
            EXPECT_EQ(trace.i4(12), 1 + static_cast<int>(i % 12));   // CHAN
            const SpsMatch match = sps.find(trace.i4(8), trace.i4(12));
            ASSERT_EQ(match.status, SpsStatus::kFound) << i;
            EXPECT_EQ(trace.i4(72), match.source->easting);
            EXPECT_EQ(trace.i4(76), match.source->northing);
            EXPECT_EQ(trace.i4(80), match.receiver->easting);
            EXPECT_EQ(trace.i4(84), match.receiver->northing);
            EXPECT_EQ(trace.i4(44), match.source->elevation);
            EXPECT_EQ(trace.i4(40), match.receiver->elevation);
            EXPECT_EQ(trace.i4(48), match.source->depth);
            EXPECT_EQ(trace.i2(94), match.source->uphole_ms);
            EXPECT_EQ(trace.i2(98), match.source->static_ms);
            EXPECT_EQ(trace.i2(100), match.receiver->static_ms);
            EXPECT_EQ(trace.i4(16), match.source->point);
            EXPECT_EQ(trace.i4(36),  // OFFSET
                      std::fabs(match.receiver->easting - match.source->easting));
            const double middle = (match.receiver->easting + match.source->easting) / 2;
            EXPECT_EQ(trace.i4(180), std::trunc(middle));                  // CDPX
            EXPECT_EQ(middle - 12.5 * (trace.i4(20) - 1), line.cdp_x(1));  // CDPN
            EXPECT_EQ(trace.i2(160) * 10000 + trace.i2(162) * 100 + trace.i2(164),
                      match.source->time);
        }
    }
}

// A streamer: what P1/90 has for a trace's SOUPOINT and CHAN is what its header says, in tenths.
TEST(SyntheticFiles, P190AgreesWithTheHeaders) {
    const TemporaryFolder folder;
    const SyntheticLine line{.shots = 7,
                             .channels = 12,
                             .samples = 10,
                             .spacing_m = 25,
                             .gap = 2,
                             .marine = true,
                             .coordinate_scalar = -10,
                             .statics_ms = 0};
    const LineFiles files{.segy = folder.file("line.sgy"),
                          .p190 = folder.file("line.p190"),
                          .header_definition = standard_header()};
    const auto failure = write_line(line, files);
    ASSERT_FALSE(failure) << failure.reason();
    const auto p190 = P1File::read(files.p190, kTestReport);
    ASSERT_TRUE(p190) << p190.fault().reason();
    const std::string text = file_bytes(files.segy);
    const auto bytes = std::as_bytes(std::span(text));
    for (std::size_t i = 0; i < 7 * 12; ++i) {
        const TraceBytes trace{bytes.subspan(3600 + i * 280, 280)};
        const P1Position& source = p190->sources()[i / 12];
        const P1Group* group = p190->find_group(source, {}, trace.i4(12), P1Count::kNumber, false);
        ASSERT_TRUE(group);
        EXPECT_EQ(trace.i4(16), source.point);
        EXPECT_EQ(trace.i4(72), 10 * source.easting);
        EXPECT_EQ(trace.i4(76), 10 * source.northing);
        EXPECT_EQ(trace.i4(80), 10 * group->easting());
        EXPECT_EQ(trace.i4(84), 10 * group->northing());
        EXPECT_EQ(trace.i4(60), source.water_depth);
        EXPECT_EQ(trace.i4(40), -group->depth);
        EXPECT_EQ(trace.i2(70), -10);
        EXPECT_EQ(trace.i2(160) * 3600 + trace.i2(162) * 60 + trace.i2(164), source.second);
        // Half a spacing, the gap, and the channels that are nearer.
        EXPECT_EQ(trace.i4(36), 12 + 25 * (2 + 12 - trace.i4(12)));
    }
}

TEST(SyntheticFiles, SaysWhyALineCannotBeWritten) {
    const TemporaryFolder folder;
    const SyntheticLine line{.shots = 1, .channels = 1, .samples = 1};
    const std::string good = folder.write("line.sgy", "old");
    const std::string header = standard_header();
    const std::string bare = folder.write("bare", "");
    const struct {
        LineFiles files;
        const char* words;
    } kCases[] = {
        {{.segy = good, .header_definition = folder.file("none")}, "header description"},
        {{.segy = folder.path().string(), .header_definition = header}, "cannot write"},
        {{.segy = good, .sps = folder.file("no/line"), .header_definition = header}, "line.s"},
        {{.segy = good, .format = SampleFormat::kInt16, .header_definition = bare}, "WEIGHT"},
        {{.segy = "/dev/full", .header_definition = header}, "cannot write '/dev/full'"}};
    for (const auto& [files, words] : kCases) {
        const auto failure = write_line(line, files);
        ASSERT_TRUE(failure) << words;
        EXPECT_NE(failure.reason().find(words), std::string::npos) << failure.reason();
    }
    EXPECT_EQ(file_bytes(good), "old");
    EXPECT_FALSE(sps_fault(line));
    EXPECT_TRUE(sps_fault({.shots = 10000}));
    EXPECT_TRUE(sps_fault({.channels = 10000}));
    EXPECT_TRUE(p190_fault({.channels = 10000}));
    EXPECT_TRUE(SyntheticLine{.coordinate_scalar = -1000}.fault()) << "5,720,000,000";
    EXPECT_TRUE(SyntheticLine{.coordinate_scalar = 0}.fault());
}

}  // namespace
}  // namespace halvern::synthetic
