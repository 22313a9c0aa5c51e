// What the chain itself costs a trace: items that do nothing, between an input and the end.

#include <benchmark/benchmark.h>

#include <memory>

#include "flow/process_flow_item.h"

namespace halvern {

void TerminateJob(int) { std::abort(); }

namespace {

class Nothing final : public ProcessFlowItem {
public:
    Nothing() : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet) {}
};

// The limit is one microsecond an item and trace.
void chain_of_idle_items(benchmark::State& state) {
    const auto items = static_cast<int>(state.range(0));
    Nothing head;
    FlowItem* last = &head;
    for (int i = 0; i < items; ++i) last = &last->SetNext(std::make_unique<Nothing>());
    LineHeader line;
    TraceHeaderDefinition header;
    TraceSamples samples;
    for (auto _ : state) head.SendTrace(line, header, samples);
    state.counters["ns_per_item"] = benchmark::Counter(
        static_cast<double>(items) * 1e-9,
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.SetLabel("limit 1000 ns an item and trace");
}
BENCHMARK(chain_of_idle_items)->Arg(1)->Arg(10);

}  // namespace
}  // namespace halvern

BENCHMARK_MAIN();
