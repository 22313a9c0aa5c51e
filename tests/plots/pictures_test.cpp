#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "plots/section_picture.h"
#include "plots/survey_pictures.h"
#include "support/small_segy.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::small_segy;
using testing_support::SmallTrace;
using testing_support::TemporaryFolder;

/// What a function makes of all traces of a file.
template <class Read, class Result>
std::string read_all(const TemporaryFolder& folder, const std::string& bytes, Read&& read,
                     Result& result) {
    const auto source =
        open_trace_source(folder.write("file.sgy", bytes), HALVERN_SOURCE_DIR "/header/default")
            .source;
    TraceSelection selection;
    EXPECT_EQ(selection.parse("", ""), "");
    EXPECT_EQ(selection.start(*source), "");
    return read(*source, selection, result);
}

/// Ten traces of 101 samples, all zero but sample 50 of the fourth.
Section spike(float amplitude) {
    Section section{.samples = 101, .interval_ms = 4};
    section.amplitudes.assign(10 * 101, 0.0f);
    section.amplitudes[3 * 101 + 50] = amplitude;
    for (int i = 1; i <= 10; ++i) section.numbers.push_back(i);
    section.words = {{.name = "trace", .values = std::vector<double>(10, 1)}};
    return section;
}

// The fourth of ten traces is centred at 3.5 / 10 of the width, sample 50 of 0 ... 100 at half
// height.
TEST(SectionPicture, ASpikeIsWhereItsTraceAndTimeAre) {
    struct Case {
        SectionStyle style;
        float amplitude;
        picture::Colour at_spike, elsewhere;
    };
    const Case kCases[] = {
        {SectionStyle::kGrey, 1, {0, 0, 0}, {127, 127, 127}},
        {SectionStyle::kGrey, -1, {255, 255, 255}, {127, 127, 127}},
        {SectionStyle::kRedBlue, 1, {5, 48, 97}, {250, 250, 250}},
        {SectionStyle::kRedBlue, -1, {103, 0, 31}, {250, 250, 250}},
    };
    for (const Case& c : kCases) {
        const Section section = spike(c.amplitude);
        // Clipped well beyond full scale, so that the pixels beside the peak have its colour, too.
        const SectionLook look{.style = c.style, .full_scale = 0.5};
        const picture::Canvas canvas = draw_section(section, look);
        const picture::Rect area = section_area(section, look);
        const int x = area.x + area.width * 35 / 100, y = area.y + area.height / 2;
        const auto near = [](picture::Colour a, picture::Colour b) {
            return std::abs(a.red - b.red) + std::abs(a.green - b.green) +
                       std::abs(a.blue - b.blue) <=
                   6;
        };
        EXPECT_TRUE(near(canvas.at(x, y), c.at_spike)) << int{canvas.at(x, y).red};
        for (const auto& [other_x, other_y] : {std::pair{x + area.width / 10, y},
                                               {x - area.width / 10, y},
                                               {x, y - 30},
                                               {x, y + 30}}) {
            EXPECT_TRUE(near(canvas.at(other_x, other_y), c.elsewhere));
        }
    }
}

TEST(SectionPicture, WigglesFillTheirPositiveSide) {
    const SectionLook look{.style = SectionStyle::kWiggle, .full_scale = 1};
    for (const float amplitude : {0.5f, -0.5f}) {
        const Section section = spike(amplitude);
        const picture::Canvas canvas = draw_section(section, look);
        const picture::Rect area = section_area(section, look);
        const int base = area.x + area.width * 35 / 100, y = area.y + area.height / 2;
        const int quarter = area.width / 40;  // half way to the crest
        EXPECT_EQ(canvas.at(base + quarter, y).red<60, amplitude> 0);
        EXPECT_GT(canvas.at(base - quarter, y).red, 150) << "only the line, on the other side";
    }
}

TEST(Section, TakesWindowAndWordsAndScales) {
    const TemporaryFolder folder;
    std::vector<SmallTrace> traces;
    for (int i = 1; i <= 4; ++i) {
        SmallTrace trace{.ffid = 5, .channel = i};
        for (int j = 0; j < 11; ++j) trace.samples.push_back(static_cast<float>(10 * i + j));
        traces.push_back(trace);
    }
    traces[1].samples[3] = std::nanf("");
    Section section;
    const auto read = [](auto& source, auto& selection, Section& result) {
        return read_section(source, selection, {.window = TimeWindow{10, 20}, .most_traces = 3},
                            result);
    };
    ASSERT_EQ(read_all(folder, small_segy(4000, 11, traces), read, section), "");
    // Samples at 0, 4, ... 40 ms: those at 12, 16 and 20 are within 10 to 20.
    EXPECT_EQ(section.amplitudes, (std::vector<float>{13, 14, 15, 0, 24, 25, 33, 34, 35}));
    EXPECT_EQ(section.start_ms, 12);
    EXPECT_TRUE(section.cut);
    ASSERT_EQ(section.words.size(), 2u);
    EXPECT_EQ(section.words[0].name, "FFID");
    EXPECT_EQ(section.words[1].values, (std::vector<double>{1, 2, 3}));
    // Of 13 14 15 24 25 33 34 35, the zero left out: place 3.5 of 0 ... 7 is rounded up.
    EXPECT_EQ(amplitude_percentile(section, 50), 25);
    EXPECT_EQ(amplitude_percentile(section, 100), 35);
}

// 4 ms, 256 samples: bin k is at k / 1.024 Hz. A tenth of the amplitude is 20 dB less.
TEST(Spectrum, ShowsSinesAtTheirFrequencyAndStrength) {
    const TemporaryFolder folder;
    SmallTrace trace;
    for (int j = 0; j < 256; ++j) {
        const double turn = 2 * std::numbers::pi * j / 256;
        trace.samples.push_back(
            static_cast<float>(std::sin(32 * turn) + 0.1 * std::sin(80 * turn)));
    }
    Spectrum spectrum;
    const auto read = [](auto& source, auto& selection, Spectrum& result) {
        return read_spectrum(source, selection, {}, result);
    };
    ASSERT_EQ(read_all(folder, small_segy(4000, 256, {trace, trace}), read, spectrum), "");
    EXPECT_EQ(spectrum.traces, 2);
    EXPECT_EQ(spectrum.nyquist_hz, 125);
    ASSERT_EQ(spectrum.decibels.size(), 129u);
    EXPECT_EQ(spectrum.decibels[32], 0);
    EXPECT_NEAR(spectrum.decibels[80], -20, 0.05);  // fading the ends leaks a little
    EXPECT_LT(spectrum.decibels[56], -50);
}

TEST(Spectrum, SaysWhenThereIsNone) {
    const TemporaryFolder folder;
    Spectrum spectrum;
    const auto read = [](auto& source, auto& selection, Spectrum& result) {
        return read_spectrum(source, selection, {}, result);
    };
    EXPECT_NE(read_all(folder, small_segy(4000, 8, {{}}), read, spectrum).find("zero"),
              std::string::npos);
    EXPECT_NE(read_all(folder, small_segy(4000, 2, {{}}), read, spectrum).find("few"),
              std::string::npos);
}

/// Traces with big-endian 32-bit words set: CDPN at 20, SRCX at 72, RECX at 80, INLINE at 188,
/// XLINE at 192, all counted from 0.
std::string with_words(const std::vector<std::vector<std::pair<int, int>>>& traces) {
    std::string bytes = small_segy(4000, 0, std::vector<SmallTrace>(traces.size()));
    for (std::size_t i = 0; i < traces.size(); ++i) {
        for (const auto& [offset, value] : traces[i]) {
            bytes[3600 + i * 240 + static_cast<std::size_t>(offset) + 3] = static_cast<char>(value);
        }
    }
    bytes[3221] = 0;
    return bytes;
}

TEST(Fold, CountsByCdpOrByBin) {
    const TemporaryFolder folder;
    const auto read = [](auto& source, auto& selection, Fold& result) {
        return read_fold(source, selection, result);
    };
    Fold line, map, none;
    ASSERT_EQ(read_all(folder, with_words({{{20, 5}}, {{20, 6}}, {{20, 5}}}), read, line), "");
    EXPECT_FALSE(line.is_map);
    ASSERT_EQ(line.bins.size(), 2u);
    for (const Fold::Bin& bin : line.bins) EXPECT_EQ(bin.traces, bin.x == 5 ? 2 : 1);
    ASSERT_EQ(
        read_all(folder,
                 with_words({{{188, 1}, {192, 7}}, {{188, 2}, {192, 8}}, {{188, 2}, {192, 8}}}),
                 read, map),
        "");
    EXPECT_TRUE(map.is_map);
    ASSERT_EQ(map.bins.size(), 2u);
    for (const Fold::Bin& bin : map.bins) {
        EXPECT_EQ(bin.traces, bin.y);
        EXPECT_EQ(bin.x, bin.y + 6);
    }
    EXPECT_NE(read_all(folder, with_words({{}}), read, none), "");
}

TEST(SurveyMap, AveragesAWordOverEachPosition) {
    const TemporaryFolder folder;
    const auto read = [](auto& source, auto& selection, SurveyMap& result) {
        return read_map(source, selection, "CDPN", result);
    };
    SurveyMap map;
    ASSERT_EQ(read_all(folder,
                       with_words({{{72, 10}, {20, 4}}, {{72, 10}, {20, 8}}, {{72, 20}, {20, 1}}}),
                       read, map),
              "");
    EXPECT_TRUE(map.places[SurveyMap::kReceiver].empty()) << "all at 0, 0: not filled";
    const auto& sources = map.places[SurveyMap::kSource];
    ASSERT_EQ(sources.size(), 2u);
    EXPECT_EQ(sources[0].x, 10);
    EXPECT_EQ(sources[0].value, 6);
    EXPECT_EQ(sources[1].value, 1);
}

}  // namespace
}  // namespace halvern
