#include "support/item_bench.h"

#include <bit>
#include <cstring>

#include "trace/big_endian.h"

namespace halvern::testing_support {

int CaptureItem::ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                              TraceSamples& samples) {
    const std::span<float> floats = samples.floats(header);
    traces.push_back(
        {{header.image(), header.image() + kTraceHeaderBytes}, {floats.begin(), floats.end()}});
    line_samples = line.samples();
    line_interval_us = line.sample_interval().us();
    return kPassOn;
}

ItemBenchBase::ItemBenchBase(const BenchLine& line,
                             const std::function<std::unique_ptr<FlowItem>()>& make)
    : image_(kTraceHeaderBytes), item_(make()) {
    EXPECT_EQ(definition_.load(HALVERN_SOURCE_DIR "/header/default"), 0);
    definition_.attach(image_.data());
    line_.set_sample_interval(SampleInterval::of_us(line.interval_us));
    line_.set_samples(line.samples, line.samples);
    line_.set_format(SampleFormat::kIeee);
    auto capture = std::make_unique<CaptureItem>();
    capture_ = capture.get();
    item_->SetNext(std::move(capture));
}

ItemBenchBase::~ItemBenchBase() = default;

void ItemBenchBase::set(std::string_view word, double value) {
    const int index = definition_.find(word);
    ASSERT_GE(index, 0) << "no header word " << word;
    definition_.attach(image_.data());
    definition_.set_double(index, value);
}

void ItemBenchBase::prepare() {
    prepared_ = true;
    definition_.attach(image_.data());
    item_->PrepareChain(line_, definition_, samples_, 0);
}

std::vector<float> ItemBenchBase::process(const std::vector<float>& trace) {
    std::vector<std::byte> raw(trace.size() * 4);
    for (std::size_t i = 0; i < trace.size(); ++i) {
        put_f32(std::span(raw).subspan(i * 4).first<4>(), trace[i]);
    }
    const auto count = static_cast<int>(trace.size());
    samples_.set_raw(raw, count, line_.samples(), count, SampleFormat::kIeee);
    if (!prepared_) prepare();
    definition_.attach(image_.data());
    const std::size_t before = passed().size();
    item_->DeliverTrace(line_, definition_, samples_);
    image_.assign(kTraceHeaderBytes, std::byte{0});
    if (passed().size() == before) return {};
    return passed().back().samples;
}

void ItemBenchBase::finish() {
    item_->FlushAtEnd();
    item_->FlushChain();
    item_->EndRun();
    item_->EndChain();
}

double ItemBenchBase::word(std::string_view name, int passed) {
    const int index = definition_.find(name);
    EXPECT_GE(index, 0) << "no header word " << name;
    auto& traces = capture_->traces;
    auto& trace = passed < 0 ? traces.back() : traces.at(static_cast<std::size_t>(passed));
    std::byte* attached = definition_.image();
    definition_.attach(trace.header.data());
    const double value = definition_.get_double(index);
    definition_.attach(attached);
    return value;
}

FlowSection section_of(FlowItemKind kind, std::vector<std::string> lines) {
    return {.disabled = false,
            .kind = kind,
            .keyword = flow_item_kind(kind).keyword,
            .lines = std::move(lines),
            .line_number = 1};
}

std::string written(FlowItem& item) {
    std::FILE* const stream = std::tmpfile();
    item.WriteParameters(stream);
    const std::string text = text_of(stream);
    std::fclose(stream);
    return text;
}

Rows sheet_of(FlowItem& item) {
    for (const Parameter& parameter : item.Parameters()) {
        if (const auto* rows = std::get_if<Rows>(&parameter.value)) return *rows;
    }
    ADD_FAILURE() << "no sheet";
    return {};
}

void expect_near(const std::vector<float>& actual, const std::vector<float>& expected,
                 float tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_NEAR(actual[i], expected[i], tolerance) << "sample " << i;
    }
}

}  // namespace halvern::testing_support
