#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "flow/flow_item.h"
#include "support/job_end.h"

namespace halvern::testing_support {

/// The line that a bench pretends to read.
struct BenchLine {
    int interval_us = 4000;
    int samples = 0;
};

/// A trace as it left the item under test.
struct PassedTrace {
    std::vector<std::byte> header;  // 240 bytes
    std::vector<float> samples;
};

/// Last item of a bench's chain: keeps what reaches it.
class CaptureItem final : public FlowItem {
public:
    CaptureItem() : FlowItem(FlowItemKind::kSegyDiskOutput, LogFlag::kQuiet) {}
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    std::vector<PassedTrace> traces;
    int line_samples = 0;      // of the line header that the last trace came with
    int line_interval_us = 0;  // likewise
};

/// Feeds traces to one item as a job would, with the installed header description, and keeps what
/// it passes on. Header words of the next trace are set with set().
class ItemBenchBase {
public:
    /// `make` makes the item while the bench already catches the log.
    ItemBenchBase(const BenchLine& line, const std::function<std::unique_ptr<FlowItem>()>& make);
    ~ItemBenchBase();

    /// A word of the next trace's header; unset words are 0.
    void set(std::string_view word, double value);
    /// Sends a trace (the first one prepares the item) and gives the samples of what the item
    /// passed on last; empty when it kept the trace back.
    std::vector<float> process(const std::vector<float>& trace);
    /// Prepares the item without a trace.
    void prepare();
    /// End of the data: FlushAtEnd and EndRun.
    void finish();
    /// A word of a passed trace's header, the last one by default.
    double word(std::string_view name, int passed = -1);

    const std::vector<PassedTrace>& passed() const { return capture_->traces; }
    const CaptureItem& capture() const { return *capture_; }
    TraceHeaderDefinition& definition() { return definition_; }
    FlowItem& base_item() { return *item_; }
    std::string log() const { return log_.text(); }

private:
    LogCapture log_;
    TraceHeaderDefinition definition_;
    std::vector<std::byte> image_;
    LineHeader line_;
    TraceSamples samples_;
    std::unique_ptr<FlowItem> item_;
    CaptureItem* capture_;
    bool prepared_ = false;
};

/// A section of a kind from its parameter lines.
FlowSection section_of(FlowItemKind kind, std::vector<std::string> lines);

template <class Item>
class ItemBench : public ItemBenchBase {
public:
    ItemBench(const BenchLine& line, std::vector<std::string> lines)
        : ItemBenchBase(line, [&]() -> std::unique_ptr<FlowItem> {
              return std::make_unique<Item>(FlowSection{.lines = std::move(lines)}, LogFlag::kLog);
          }) {}
    Item& item() { return static_cast<Item&>(base_item()); }
};

/// What an item would write into a flow file.
std::string written(FlowItem& item);

/// The sheet of an item's window.
Rows sheet_of(FlowItem& item);

/// Compares sample by sample.
void expect_near(const std::vector<float>& actual, const std::vector<float>& expected,
                 float tolerance);

}  // namespace halvern::testing_support
