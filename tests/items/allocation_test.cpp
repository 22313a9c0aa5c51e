// Once a run is warm, no item allocates: every operator new of this program is counted.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <new>

#include "foundation/global_config.h"
#include "foundation/system_root.h"
#include "items/agc.h"
#include "items/deconvolution.h"
#include "items/filter.h"
#include "items/linear_moveout.h"
#include "items/mute.h"
#include "items/normal_moveout.h"
#include "items/stack.h"
#include "items/time_shift.h"
#include "items/trace_math.h"
#include "items/trace_sort.h"
#include "support/item_bench.h"
#include "trace/big_endian.h"

namespace {
std::atomic<long> allocations{0};

void* counted(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) noexcept {
    ++allocations;
    size = (size + alignment) / alignment * alignment;  // never zero
    return std::aligned_alloc(alignment, size);
}
void* present(void* place) {
    if (!place) throw std::bad_alloc();
    return place;
}
}  // namespace

// Not inlined: the compiler would miss the other half of a pair.
[[gnu::noinline]] void* operator new(std::size_t size) { return present(counted(size)); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return counted(size);
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t alignment) {
    return present(counted(size, static_cast<std::size_t>(alignment)));
}
[[gnu::noinline]] void operator delete(void* place) noexcept { std::free(place); }
[[gnu::noinline]] void operator delete(void* place, std::size_t) noexcept { std::free(place); }
[[gnu::noinline]] void operator delete(void* place, std::align_val_t) noexcept { std::free(place); }
[[gnu::noinline]] void operator delete(void* place, std::size_t, std::align_val_t) noexcept {
    std::free(place);
}

namespace halvern {
namespace {

using namespace testing_support;

struct Warm {
    const char* name;
    std::function<std::unique_ptr<FlowItem>()> make;
};
template <class Item>
Warm warm(const char* name, std::vector<std::string> lines) {
    return {name, [lines] {
                return std::make_unique<Item>(FlowSection{.lines = lines}, LogFlag::kQuiet);
            }};
}

// Takes what is sent and keeps nothing.
class Drain final : public FlowItem {
public:
    Drain() : FlowItem(FlowItemKind::kSegyDiskOutput, LogFlag::kQuiet) {}
};

class AllocationOf : public testing::TestWithParam<Warm> {};

TEST_P(AllocationOf, NothingPerTrace) {
    constexpr int kSamples = 500, kTraces = 26;
    const SystemRoot root;  // for the sort's buffer file
    ASSERT_EQ(ReadGlobalConfig(root.file("halvern.cfg")), 0);
    TraceHeaderDefinition header;
    ASSERT_EQ(header.load(HALVERN_SOURCE_DIR "/header/default"), 0);
    std::vector<std::byte> image(kTraceHeaderBytes), raw(kSamples * 4);
    header.attach(image.data());
    const int offset = header.find("OFFSET");
    LineHeader line;
    line.set_sample_interval(SampleInterval::of_us(4000));
    line.set_samples(kSamples, kSamples);
    TraceSamples samples;
    const auto item = GetParam().make();
    item->SetNext(std::make_unique<Drain>());

    const auto deliver = [&](int number) {
        header.set_double(offset, 10 * number);
        for (std::size_t i = 0; i < kSamples; ++i) {  // every fifth trace is dead
            const auto value = static_cast<float>((i * i + 7) % 101) - 50.0f;
            put_f32(std::span(raw).subspan(i * 4).first<4>(), number % 5 != 0 ? value : 0.0f);
        }
        samples.set_raw(raw, kSamples, kSamples, kSamples, SampleFormat::kIeee);
        if (number == 0) item->PrepareChain(line, header, samples, kTraces);
        item->DeliverTrace(line, header, samples);
    };
    for (int number = 0; number < 6; ++number) deliver(number);
    const long before = allocations;
    for (int number = 6; number < kTraces; ++number) deliver(number);
    EXPECT_EQ(allocations - before, 0);
    EXPECT_EQ(item->GetReceivedCount(), kTraces);
}

INSTANTIATE_TEST_SUITE_P(
    Items, AllocationOf,
    testing::Values(
        warm<Agc>("Agc", {}), warm<Deconvolution>("DeconvolutionInTime", {}),
        warm<Deconvolution>("DeconvolutionInFrequency", {"DOMAIN=2"}),
        warm<Deconvolution>("DeconvolutionLong", {"DOMAIN=2", "FILTERLEN=1900"}),
        warm<Filter>("Filter", {}),
        warm<LinearMoveout>("LinearMoveout", {"OFFSET_VEL=0,1000", "OFFSET_VEL=300,2000"}),
        warm<Mute>("Mute", {"OFFSET_TIME=0,8", "OFFSET_TIME=300,900"}),
        warm<NormalMoveout>("NormalMoveout", {"TIME_VEL=0,1500,0,0", "TIME_VEL=1000,2500,0,0"}),
        warm<Stack>("Stack", {"SORTED=1", "STACKHEADER=OFFSET"}),
        warm<TimeShift>("TimeShift", {"AMOUNT=-6"}),
        warm<TraceMath>("TraceMath", {"SAMPLEVALADDED=1"}),
        warm<TraceSort>("TraceSort", {"BUFFERFILE=1", "HEADER1=OFFSET"})),
    [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace halvern
