// The geometry items in a flow that copies 40,000 traces of 1,500 samples (IBM to IBM), against the
// copy's own time for a trace; reading SPS relations against counting their lines.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "foundation/system_paths.h"
#include "geometry/ascii_input.h"
#include "geometry/merge_sps.h"
#include "geometry/trace_binning.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_disk_output.h"
#include "trace/big_endian.h"

namespace halvern {

void TerminateJob(int) {
    std::fputs("the job ended\n", stderr);
    std::exit(1);
}

namespace {

namespace fs = std::filesystem;

constexpr int kTraces = 40'000;
constexpr int kSamples = 1500;
constexpr int kFiles = 9'999;  // FFIDs that the geometry knows, of 100 channels each

/// Everything the flows read, made once and removed at the end. FFID and CHAN of a trace come in
/// the order of the relations, or from all over them.
class Data {
public:
    Data() {
        fs::create_directories(folder_);
        SetSystemDirectory(HALVERN_SOURCE_DIR);
        write_traces("in-order.sgy", false);
        write_traces("random.sgy", true);
        write_sps();
        write_columns();
    }
    ~Data() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    std::string file(const char* name) const { return (folder_ / name).string(); }

private:
    void write(const char* name, const std::string& bytes) const {
        std::FILE* out = std::fopen(file(name).c_str(), "wb");
        if (!out || std::fwrite(bytes.data(), 1, bytes.size(), out) != bytes.size() ||
            std::fclose(out) != 0) {
            std::perror(name);
            std::exit(1);
        }
    }
    void write_traces(const char* name, bool random) const {
        constexpr std::size_t kRecord = kTraceHeaderBytes + kSamples * 4;
        std::string bytes(kLineHeaderBytes + kRecord * kTraces, '\0');
        const auto image = std::as_writable_bytes(std::span(bytes));
        put_i16(image.subspan<3216, 2>(), 2000);
        put_i16(image.subspan<3220, 2>(), kSamples);
        put_i16(image.subspan<3224, 2>(), 1);
        std::mt19937 generator(1);
        for (int i = 0; i < kTraces; ++i) {
            const auto record =
                image.subspan(kLineHeaderBytes + kRecord * static_cast<std::size_t>(i));
            const int trace = random ? static_cast<int>(generator() % (kFiles * 100u)) : i;
            put_i32(record.subspan<8, 4>(), 1 + trace / 100);
            put_i32(record.subspan<12, 4>(), 1 + trace % 100);
            for (const std::size_t word : {72u, 76u, 80u, 84u}) {
                put_i32(record.subspan(word).first<4>(), static_cast<int>(generator() % 20000));
            }
        }
        write(name, bytes);
    }
    // 10,000 sources, 20,000 receivers, 40,000 relations of 25 channels, and a million relations.
    void write_sps() const {
        std::string text;
        for (int i = 0; i < 10'000; ++i) {
            append_sps_point(text, 'S', {.line = 1, .point = i, .easting = i * 25.0});
        }
        write("s", text);
        text.clear();
        for (int i = 0; i < 20'000; ++i) {
            append_sps_point(text, 'R', {.line = 1, .point = i, .easting = i * 25.0});
        }
        write("r", text);
        text.clear();
        const auto relation = [&](int ffid, int part) {
            append_sps_relation(text, "1",
                                {.ffid = ffid,
                                 .source_line = 1,
                                 .source_point = ffid,
                                 .first_channel = part * 25 + 1,
                                 .last_channel = part * 25 + 25,
                                 .receiver_line = 1,
                                 .first_receiver = ffid + part * 25,
                                 .last_receiver = ffid + part * 25 + 24});
        };
        for (int i = 0; i < 40'000; ++i) relation(i / 4, i % 4);
        write("x", text);
        text.clear();
        for (int i = 0; i < 1'000'000; ++i) relation(i / 100, i % 100);
        write("million.x", text);
    }
    void write_columns() const {
        std::string text;
        for (int i = 0; i < kFiles * 100; ++i) {
            char line[64];
            std::snprintf(line, sizeof line, "%6d%6d%10d%10d\n", 1 + i / 100, 1 + i % 100, i, -i);
            text += line;
        }
        write("columns", text);
    }

    fs::path folder_ = fs::temp_directory_path() / "halvern-bench-geometry";
};

const Data& data() {
    static const Data made;
    return made;
}

/// Processor seconds of this process: what else runs on the machine takes no part in them.
double cpu_seconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

/// The last item of a flow: when it was prepared and when the run ended.
class Stopwatch final : public ProcessFlowItem {
public:
    explicit Stopwatch(double& seconds)
        : ProcessFlowItem(FlowItemKind::kTraceMath, LogFlag::kQuiet), seconds_(seconds) {}
    void PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) override {
        start_ = cpu_seconds();
    }
    void EndRun() override { seconds_ = cpu_seconds() - start_; }

private:
    double& seconds_;
    double start_ = 0;
};

/// Processor seconds that a flow takes from its first trace on; without an item it copies.
double run_flow(const char* input, std::unique_ptr<FlowItem> item) {
    double seconds = 0;
    SegyDiskInput head({.lines = {"FILE=" + data().file(input)}}, LogFlag::kQuiet);
    FlowItem* last = &head;
    if (item) last = &last->SetNext(std::move(item));
    last = &last->SetNext(std::make_unique<SegyDiskOutput>(
        FlowSection{.lines = {"OUTPUTFORMAT=1", "FILE=" + data().file("out.sgy")}},
        LogFlag::kQuiet));
    last->SetNext(std::make_unique<Stopwatch>(seconds));
    head.RunInput();
    return seconds;
}

template <class Make>
void compare_flows(benchmark::State& state, const char* input, Make make, double limit) {
    double copy = std::numeric_limits<double>::infinity();
    double with_item = copy;
    for ([[maybe_unused]] auto round : state) {
        copy = std::min(copy, run_flow(input, nullptr));
        with_item = std::min(with_item, run_flow(input, make()));
    }
    state.counters["copy_us"] = copy / kTraces * 1e6;
    state.counters["added_us"] = (with_item - copy) / kTraces * 1e6;
    state.counters["ratio"] = (with_item - copy) / copy;
    state.counters["limit"] = limit;
}

void sps_merge(benchmark::State& state, const char* input, double limit) {
    const auto make = [] {
        return std::make_unique<MergeSps>(
            FlowSection{.lines = {"SOURCEFILE=" + data().file("s"),
                                  "RECEIVERFILE=" + data().file("r"),
                                  "RELATIONFILE=" + data().file("x")}},
            LogFlag::kQuiet);
    };
    compare_flows(state, input, make, limit);
}
BENCHMARK_CAPTURE(sps_merge, in_order, "in-order.sgy", 0.3)->Iterations(7);
BENCHMARK_CAPTURE(sps_merge, random, "random.sgy", 1.0)->Iterations(7);

void ascii_update(benchmark::State& state, const char* input) {
    const auto make = [] {
        return std::make_unique<AsciiInput>(
            FlowSection{.lines = {"FILENAME=" + data().file("columns"), "MATCHHEADER=0 FFID 1 6",
                                  "MATCHHEADER=0 CHAN 7 12", "DATAHEADER=SRCX 13 22",
                                  "DATAHEADER=RECX 23 32"}},
            LogFlag::kQuiet);
    };
    compare_flows(state, input, make, 0.5);
}
BENCHMARK_CAPTURE(ascii_update, in_order, "in-order.sgy")->Iterations(7);
BENCHMARK_CAPTURE(ascii_update, random, "random.sgy")->Iterations(7);

void binning(benchmark::State& state) {
    const auto make = [] {
        return std::make_unique<TraceBinning>(
            FlowSection{.lines = {"ROTATION=-10", "YORIGIN=-5000"}}, LogFlag::kQuiet);
    };
    compare_flows(state, "random.sgy", make, 0.05);
}
BENCHMARK(binning)->Iterations(15);

/// The million relations, read and prepared, against counting their line ends.
void sps_relations(benchmark::State& state) {
    double count = std::numeric_limits<double>::infinity();
    double read = count;
    for ([[maybe_unused]] auto round : state) {
        const double start = cpu_seconds();
        std::vector<char> block(std::size_t{1} << 18);
        std::FILE* file = std::fopen(data().file("million.x").c_str(), "rb");
        int lines = 0;
        while (const std::size_t bytes = std::fread(block.data(), 1, block.size(), file)) {
            const char* at = block.data();
            const char* const end = at + bytes;
            while ((at = static_cast<const char*>(
                        std::memchr(at, '\n', static_cast<std::size_t>(end - at))))) {
                ++lines;
                ++at;
            }
        }
        std::fclose(file);
        benchmark::DoNotOptimize(lines);
        const double between = cpu_seconds();
        const SilentReporter report;
        SpsDataSet set(report);
        if (set.read_sources(data().file("s")) != 0 || set.read_receivers(data().file("r")) != 0 ||
            set.read_relations(data().file("million.x")) != 0 || set.prepare() != 0) {
            state.SkipWithError("cannot read");
        }
        count = std::min(count, between - start);
        read = std::min(read, cpu_seconds() - between);
    }
    state.counters["count_ms"] = count * 1e3;
    state.counters["read_ms"] = read * 1e3;
    state.counters["ratio"] = read / count;
    state.counters["limit"] = 20;
}
BENCHMARK(sps_relations)->Iterations(5);

}  // namespace
}  // namespace halvern

BENCHMARK_MAIN();
