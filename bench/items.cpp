// The items, for traces of 1,500 IEEE samples at 2 ms as they come from a file, against one
// transform pair of FFTW of 2,048 values. What each should stay below stands behind its name. What
// the sort costs besides its traces is in numerics.cpp.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "fftw.h"
#include "items/agc.h"
#include "items/attribute.h"
#include "items/deconvolution.h"
#include "items/filter.h"
#include "items/header_math.h"
#include "items/linear_moveout.h"
#include "items/mute.h"
#include "items/normal_moveout.h"
#include "items/resample.h"
#include "items/stack.h"
#include "items/time_shift.h"
#include "items/trace_math.h"
#include "items/trace_mix.h"
#include "items/trace_select.h"
#include "items/trace_window.h"
#include "ratio.h"
#include "trace/codecs.h"

namespace halvern {

void TerminateJob(int) { std::abort(); }

namespace {

constexpr int kSamples = 1500;
constexpr int kPlaces = 100;  // on a square of 10 x 10, 10 bins apart

std::vector<std::string> velocities(int places, std::string first_line) {
    std::vector<std::string> lines{std::move(first_line)};
    for (int place = 0; place < places; ++place) {
        for (int knot = 0; knot < 8; ++knot) {
            lines.push_back("TIME_VEL=" + std::to_string(knot * 400) + "," +
                            std::to_string(1500 + knot * 250 + place) + "," +
                            std::to_string(place / 10 * 10) + "," +
                            std::to_string(place % 10 * 10));
        }
    }
    return lines;
}

/// Every trace has an offset of its own, and with `moving` a place of its own.
template <class Item>
void item(benchmark::State& state, const std::vector<std::string>& lines, bool moving) {
    LogDestination::UseStandardOutput();  // which is silent
    std::vector<std::byte> image(kTraceHeaderBytes);
    TraceHeaderDefinition header(image.data());
    if (header.load(HALVERN_HEADER) != 0) return state.SkipWithError("no header description");
    LineHeader line;
    line.set_sample_interval(SampleInterval::of_us(2000));
    line.set_samples(kSamples, kSamples);
    std::vector<float> trace(kSamples);
    std::uint64_t random = 1;
    for (float& sample : trace) {
        random = random * 6364136223846793005u + 1442695040888963407u;
        sample = static_cast<float>(static_cast<std::int64_t>(random) >> 40);
    }
    std::vector<std::byte> raw(kSamples * 4);
    encode_ieee(trace, raw);
    TraceSamples samples;
    Item item(FlowSection{.lines = lines}, LogFlag::kQuiet);
    item.PrepareChain(line, header, samples, 0);
    const int offset = header.find("OFFSET");
    const int crossline = header.find("XLINE");
    const int in_line = header.find("INLINE");
    const int ensemble = header.find("CDPN");
    Fftw fftw(2048);
    int number = 0;
    compare(
        state,
        [&] {
            ++number;
            header.set_double(offset, number % 120 * 25);
            header.set_double(ensemble, number / 60);
            if (moving) {
                header.set_double(crossline, number * 7 % 93);
                header.set_double(in_line, number * 11 % 89);
            }
            samples.set_raw(raw, kSamples, kSamples, kSamples, SampleFormat::kIeee);
            item.DeliverTrace(line, header, samples);
        },
        [&] {
            fftw.forward();
            fftw.inverse();
        });
    item.EndRun();
}

}  // namespace
}  // namespace halvern

int main(int argc, char** argv) {
    using namespace halvern;
    const auto add = [](const char* name, auto* run, std::vector<std::string> lines,
                        bool moving = false) {
        benchmark::RegisterBenchmark(name, run, std::move(lines), moving);
    };
    add("agc", item<Agc>, {});
    add("filter/1.6", item<Filter>, {});
    add("deconvolution_in_time/3", item<Deconvolution>, {});
    add("deconvolution_in_frequency/8", item<Deconvolution>, {"DOMAIN=2"});
    add("deconvolution_in_frequency_1s", item<Deconvolution>, {"DOMAIN=2", "FILTERLEN=1000"});
    add("trace_math/0.2", item<TraceMath>, {"SAMPLEVALADDED=1", "REVERSEON=1"});
    add("time_shift_whole/0.2", item<TimeShift>, {});
    add("time_shift_rounded/0.2", item<TimeShift>, {"AMOUNT=-33", "INTERPON=0"});
    add("time_shift_interpolated", item<TimeShift>, {"AMOUNT=-33"});
    add("mute/0.2", item<Mute>, {"OFFSET_TIME=0,100", "OFFSET_TIME=3000,2000"});
    add("lmo_earlier/0.2", item<LinearMoveout>, {"OFFSET_VEL=0,1500"});
    add("lmo_repeating/0.2", item<LinearMoveout>, {"OFFSET_VEL=0,15000", "TIMESHIFT=250"});
    add("nmo/1.5", item<NormalMoveout>, velocities(1, "MUTE_THRESH=0"));
    add("nmo_stretch/1.5", item<NormalMoveout>, velocities(1, "MUTE_THRESH=50"));
    add("nmo_100_locations/2", item<NormalMoveout>, velocities(kPlaces, "MUTE_THRESH=0"), true);
    add("nmo_100_locations_stretch/2", item<NormalMoveout>, velocities(kPlaces, "MUTE_THRESH=50"),
        true);
    add("stack", item<Stack>, {"SORTED=1"});
    std::vector<std::string> equations(100, "EQUATION=FOLD = (OFFSET + CHAN * 2 - FFID) / 3 % 7");
    add("header_math_100_equations", item<HeaderMath>, std::move(equations));
    add("select/0.2", item<TraceSelect>, {"SELECT=OFFSET,0-100000(25)"});
    add("select_dead", item<TraceSelect>, {"DROPDEAD=1", "DROPBAD=1"});
    add("window/0.2", item<TraceWindow>, {"START=100", "END=2000"});
    add("resample_2_to_4_ms/4", item<Resample>, {"INTERVAL=4"});
    add("resample_2_to_1_ms/4", item<Resample>, {"INTERVAL=1"});
    add("resample_2_to_3_ms/4", item<Resample>, {"INTERVAL=3"});
    add("mix_3", item<TraceMix>, {});
    add("mix_5_median", item<TraceMix>, {"TRACES=5", "METHOD=1"});
    add("envelope", item<Attribute>, {"TYPE=0"});
    add("instantaneous_frequency", item<Attribute>, {"TYPE=2"});
    add("rms", item<Attribute>, {"TYPE=10", "HEADER=SRCX"});
    add("dominant_frequency", item<Attribute>, {"TYPE=14", "HEADER=SRCX"});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
