#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "plots/fold_plot.h"
#include "plots/map_plot.h"
#include "plots/section_plot.h"
#include "plots/spectrum_plot.h"

namespace halvern {
namespace {

/// A stream of traces, as a flow has it.
class Stream {
public:
    Stream(int interval_us, int samples) {
        EXPECT_EQ(definition.load(HALVERN_SOURCE_DIR "/header/default"), 0);
        line.set_sample_interval(SampleInterval::of_us(interval_us));
        line.set_samples(samples, samples);
    }

    struct Trace {
        std::vector<std::pair<const char*, double>> words;
        std::vector<float> samples = {};
    };
    /// Why a plot of all traces cannot be drawn; empty: it can.
    std::string feed(Plot& plot, const std::vector<Trace>& traces) {
        std::array<std::byte, kTraceHeaderBytes> image{};
        definition.attach(image.data());
        if (const Fault fault = plot.begin(line, definition)) return fault.reason();
        TraceSamples samples;
        for (std::int64_t number = 1; const Trace& trace : traces) {
            image = {};
            std::ranges::copy(bytes_at_212, image.begin() + 212);
            for (const auto& [word, value] : trace.words) {
                definition.set_double(definition.find(word), value);
            }
            samples.set_floats(std::vector<float>(trace.samples));
            if (const Fault fault = plot.add(definition, samples, number++)) return fault.reason();
        }
        return plot.finish().reason();
    }

    LineHeader line;
    TraceHeaderDefinition definition;
    std::array<std::byte, 4> bytes_at_212{};
};

/// Ten traces of 101 samples, all zero but sample 50 of the fourth.
std::vector<Stream::Trace> spike(float amplitude) {
    std::vector<Stream::Trace> traces(10, {{}, std::vector<float>(101)});
    traces[3].samples[50] = amplitude;
    return traces;
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
        // Clipped well beyond full scale, so that the pixels beside the peak have its colour, too.
        SectionPlot plot({}, {.style = c.style, .scale = 0.5});
        ASSERT_EQ(Stream(4000, 101).feed(plot, spike(c.amplitude)), "");
        picture::Canvas canvas(1000, 700);
        ASSERT_FALSE(plot.draw(canvas, "spike"));
        const picture::Rect area = plot.area(canvas);
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
    for (const float amplitude : {0.5f, -0.5f}) {
        SectionPlot plot({}, {.style = SectionStyle::kWiggle, .scale = 1});
        ASSERT_EQ(Stream(4000, 101).feed(plot, spike(amplitude)), "");
        picture::Canvas canvas(1000, 700);
        ASSERT_FALSE(plot.draw(canvas, "spike"));
        const picture::Rect area = plot.area(canvas);
        const int base = area.x + area.width * 35 / 100, y = area.y + area.height / 2;
        const int quarter = area.width / 40;  // half way to the crest
        EXPECT_EQ(canvas.at(base + quarter, y).red<60, amplitude> 0);
        EXPECT_GT(canvas.at(base - quarter, y).red, 150) << "only the line, on the other side";
    }
}

TEST(Section, TakesWindowAndWordsAndScales) {
    std::vector<Stream::Trace> traces;
    for (int i = 1; i <= 3; ++i) {
        Stream::Trace trace{{{"FFID", 5}, {"CHAN", i}}};
        for (int j = 0; j < 11; ++j) trace.samples.push_back(static_cast<float>(10 * i + j));
        traces.push_back(trace);
    }
    traces[1].samples[3] = std::nanf("");
    // The last one begins a sample later and so is 30 where the others are 11 and 21.
    traces[2].words.emplace_back("DELAY", 4);
    SectionPlot plot({.window = TimeWindow{10, 20}, .most_traces = 3});
    ASSERT_EQ(Stream(4000, 11).feed(plot, traces), "");
    // Samples at 0, 4, ... 40 ms: those at 12, 16 and 20 are within 10 to 20.
    const Section& section = plot.section();
    EXPECT_EQ(section.amplitudes, (std::vector<float>{13, 14, 15, 0, 24, 25, 32, 33, 34}));
    EXPECT_EQ(section.start_ms, 12);
    EXPECT_TRUE(plot.full());
    ASSERT_EQ(section.words.size(), 2u);
    EXPECT_EQ(section.words[0].name, "FFID");
    EXPECT_EQ(section.words[1].values, (std::vector<double>{1, 2, 3}));
    // Of 13 14 15 24 25 32 33 34, the zero left out: place 3.5 of 0 ... 7 is rounded up.
    EXPECT_EQ(amplitude_percentile(section, 50), 25);
    EXPECT_EQ(amplitude_percentile(section, 100), 34);
}

TEST(Section, OfStackedTracesIsLabelledByCdp) {
    const std::vector<Stream::Trace> kStack = {
        {{{"CDPN", 7}, {"FFID", 1}, {"CHAN", 3}, {"FOLD", 2}}, {1}},
        {{{"CDPN", 8}, {"FFID", 2}, {"CHAN", 4}, {"FOLD", 1}}, {1}}};
    SectionPlot plot(SectionOptions{});
    ASSERT_EQ(Stream(4000, 1).feed(plot, kStack), "");
    ASSERT_EQ(plot.section().words.size(), 1u);
    EXPECT_EQ(plot.section().words[0].name, "CDPN");
}

TEST(Section, WithoutAnIntervalCountsSamples) {
    SectionPlot plot(SectionOptions{});
    Stream stream(0, 101);
    ASSERT_EQ(stream.feed(plot, spike(1)), "");
    EXPECT_EQ(plot.section().interval_ms, 0);
    picture::Canvas canvas(400, 300);
    EXPECT_FALSE(plot.draw(canvas, ""));
    for (const SectionOptions& options :
         {SectionOptions{.window = TimeWindow{0, 10}}, SectionOptions{.agc_ms = 100}}) {
        SectionPlot timed(options);
        EXPECT_NE(stream.feed(timed, spike(1)), "");
    }
}

// SEG-Y revision 1: bytes 215-216 scale times, negative ones divide. Bytes 213-216 are also
// AZIMUTH, a float: 0x42F6000A is 123.00008, whose lower half is 10.
TEST(TimeAxis, AppliesTheScalarOfTimes) {
    struct Case {
        int revision;
        std::array<int, 4> at_212;
        double start_ms;
    };
    const Case kCases[] = {{1, {0, 0, 0, 0}, 120},       {1, {0, 0, 0xFF, 0xF6}, 12},  // -10
                           {1, {0, 1, 0, 10}, 1200},                                   // device 1
                           {1, {0, 0, 0, 7}, 120},          // no scalar of the standard
                           {0, {0, 0, 0xFF, 0xF6}, 120},    // before there was one
                           {1, {0x42, 0xF6, 0, 10}, 120}};  // an azimuth
    for (const auto& [revision, at_212, start_ms] : kCases) {
        Stream stream(4000, 1);
        stream.line.bytes()[3500] = static_cast<std::byte>(revision);
        std::ranges::transform(at_212, stream.bytes_at_212.begin(),
                               [](int byte) { return static_cast<std::byte>(byte); });
        SectionPlot plot(SectionOptions{});
        ASSERT_EQ(stream.feed(plot, {{{{"DELAY", 120}}, {1}}}), "");
        EXPECT_EQ(plot.section().start_ms, start_ms) << revision << ' ' << at_212[3];
    }
}

// 4 ms, 256 samples: bin k is at k / 1.024 Hz. A tenth of the amplitude is 20 dB less.
TEST(Spectrum, ShowsSinesAtTheirFrequencyAndStrength) {
    Stream::Trace trace;
    for (int j = 0; j < 256; ++j) {
        const double turn = 2 * std::numbers::pi * j / 256;
        trace.samples.push_back(
            static_cast<float>(std::sin(32 * turn) + 0.1 * std::sin(80 * turn)));
    }
    SpectrumPlot spectrum({});
    ASSERT_EQ(Stream(4000, 256).feed(spectrum, {trace, trace}), "");
    EXPECT_EQ(spectrum.nyquist_hz(), 125);
    ASSERT_EQ(spectrum.decibels().size(), 129u);
    EXPECT_EQ(spectrum.decibels()[32], 0);
    EXPECT_NEAR(spectrum.decibels()[80], -20, 0.05);  // fading the ends leaks a little
    EXPECT_LT(spectrum.decibels()[56], -50);
}

TEST(Spectrum, SaysWhenThereIsNone) {
    struct Case {
        int interval_us;
        std::vector<float> samples;
        const char* reason;
    };
    const Case kCases[] = {{4000, std::vector<float>(8), "zero"},
                           {4000, {1, 2}, "few"},
                           {0, {1, 2, 3, 4}, "interval"}};
    for (const auto& [interval_us, samples, reason] : kCases) {
        SpectrumPlot spectrum({});
        EXPECT_NE(Stream(interval_us, 8).feed(spectrum, {{{}, samples}}).find(reason),
                  std::string::npos);
    }
}

TEST(Fold, CountsByCdpOrByBin) {
    struct Case {
        std::vector<Stream::Trace> traces;
        bool is_map;
        std::vector<std::array<std::int64_t, 3>> bins;  // x, y, traces
    };
    const Case kCases[] = {
        {{{{{"CDPN", 5}}}, {{{"CDPN", 6}}}, {{{"CDPN", 5}}}}, false, {{5, 0, 2}, {6, 0, 1}}},
        {{{{{"CDPN", 5}, {"FOLD", 12}}}, {{{"CDPN", 6}, {"FOLD", 1}}}},
         false,
         {{5, 0, 12}, {6, 0, 1}}},
        {{{{{"INLINE", 1}, {"XLINE", 7}}},
          {{{"INLINE", 2}, {"XLINE", 8}}},
          {{{"INLINE", 2}, {"XLINE", 8}}}},
         true,
         {{7, 1, 1}, {8, 2, 2}}}};
    for (const auto& [traces, is_map, expected] : kCases) {
        FoldPlot fold;
        ASSERT_EQ(Stream(4000, 0).feed(fold, traces), "");
        EXPECT_EQ(fold.is_map(), is_map);
        std::vector<std::array<std::int64_t, 3>> bins;
        for (const FoldPlot::Bin& bin : fold.bins()) bins.push_back({bin.x, bin.y, bin.traces});
        std::ranges::sort(bins);
        EXPECT_EQ(bins, expected);
    }
    FoldPlot none;
    EXPECT_NE(Stream(4000, 0).feed(none, {{}}), "");
}

TEST(Map, AveragesAWordOverEachPosition) {
    MapPlot map({"CDPN"});
    ASSERT_EQ(Stream(4000, 0).feed(map, {{{{"SRCX", 10}, {"CDPN", 4}, {"COORSCAL", -10}}},
                                         {{{"SRCX", 10}, {"CDPN", 8}, {"COORSCAL", -10}}},
                                         {{{"SRCX", 20}, {"CDPN", 1}}}}),
              "");
    EXPECT_TRUE(map.places(MapPlot::kReceiver).empty()) << "all at 0, 0: not filled";
    const auto& sources = map.places(MapPlot::kSource);
    ASSERT_EQ(sources.size(), 2u);
    EXPECT_EQ(sources[0].x, 1);
    EXPECT_EQ(sources[0].value, 6);
    EXPECT_EQ(sources[1].x, 20);
    EXPECT_EQ(sources[1].value, 1);
}

// A display feeds one plot page after page.
TEST(Plots, BeginAgain) {
    Stream stream(4000, 4);
    SectionPlot section(SectionOptions{});
    SpectrumPlot spectrum({});
    FoldPlot fold;
    MapPlot map({});
    for (Plot* plot : std::initializer_list<Plot*>{&section, &spectrum, &fold, &map}) {
        picture::Canvas again(400, 300), first(400, 300);
        const std::vector<Stream::Trace> kOther(3, {{{"CDPN", 9}, {"SRCX", 7}}, {9, 9, 1, 0}});
        const std::vector<Stream::Trace> kShown(1, {{{"CDPN", 2}, {"SRCX", 3}}, {1, 0, 2, 0}});
        ASSERT_EQ(stream.feed(*plot, kShown), "");
        ASSERT_FALSE(plot->draw(first, "t"));
        ASSERT_EQ(stream.feed(*plot, kOther), "");
        ASSERT_EQ(stream.feed(*plot, kShown), "");
        ASSERT_FALSE(plot->draw(again, "t"));
        EXPECT_TRUE(std::ranges::equal(first.pixels(), again.pixels()));
    }
}

}  // namespace
}  // namespace halvern
