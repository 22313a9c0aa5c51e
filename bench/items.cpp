// The items that work on a trace by itself, for traces of 1,500 samples at 2 ms, against one
// transform pair of FFTW of 2,048 values. What each should stay below stands behind its name.

#include <cstdint>
#include <memory>
#include <string>

#include "fftw.h"
#include "items/agc.h"
#include "items/deconvolution.h"
#include "items/filter.h"
#include "items/time_shift.h"
#include "items/trace_math.h"
#include "ratio.h"

namespace halvern {

void TerminateJob(int) { std::abort(); }

namespace {

constexpr int kSamples = 1500;

template <class Item>
void item(benchmark::State& state, const std::vector<std::string>& lines) {
    LogDestination::UseStandardOutput();  // which is silent
    std::vector<std::byte> image(kTraceHeaderBytes);
    TraceHeaderDefinition header(image.data());
    LineHeader line;
    line.set_sample_interval(2000 * kInternalPerUs);
    line.set_samples(kSamples, kSamples);
    std::vector<float> trace(kSamples);
    std::uint64_t random = 1;
    for (float& sample : trace) {
        random = random * 6364136223846793005u + 1442695040888963407u;
        sample = static_cast<float>(static_cast<std::int64_t>(random) >> 40);
    }
    TraceSamples samples;
    samples.set_floats(std::vector<float>(trace));
    Item item(FlowSection{.lines = lines}, LogFlag::kQuiet);
    item.PrepareChain(line, header, samples, 0);
    Fftw fftw(2048);
    compare(
        state,
        [&] {
            samples.set_floats(
                std::span<float>(trace));  // a fresh copy: 6 kB, counted as the item's
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
    const auto add = [](const char* name, auto* run, std::vector<std::string> lines) {
        benchmark::RegisterBenchmark(name, run, std::move(lines));
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
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
