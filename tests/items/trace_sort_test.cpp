#include "items/trace_sort.h"

#include <gmock/gmock.h>

#include <bit>
#include <filesystem>
#include <limits>
#include <random>

#include "flow/input_flow_item.h"
#include "foundation/global_config.h"
#include "foundation/scratch.h"
#include "foundation/system_root.h"
#include "items/filter.h"
#include "items/stack.h"
#include "items/time_shift.h"
#include "support/file_size_limit.h"
#include "support/item_bench.h"
#include "trace/big_endian.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

// A trace as it comes from the input or reaches the end of the flow.
struct Seen {
    std::vector<std::byte> header, raw;  // raw: while it is what the trace holds
    std::vector<std::uint32_t> floats;   // their bits
    SampleFormat format{};
    int stored = 0, nominal = 0, second_count = 0;
    bool operator==(const Seen&) const = default;
};

struct Given {
    double azimuth = 0;
    int offset = 0;
    int cdp = 0;
    SampleFormat format = SampleFormat::kIeee;
    int stored = 4;
};

class Source final : public InputFlowItem {
public:
    Source(std::vector<Given> traces, bool repositions = true, int samples = 4)
        : InputFlowItem(FlowItemKind::kSegyDiskInput, LogFlag::kQuiet),
          traces_(std::move(traces)),
          repositions_(repositions) {
        EXPECT_EQ(header_.load(HALVERN_SOURCE_DIR "/header/default"), 0);
        line_.set_samples(samples, samples);
        line_.set_sample_interval(SampleInterval::of_us(2000));
        raw_.resize(static_cast<std::size_t>(samples) * 4);
    }
    int forgotten = -1;  // a trace that is not there the second time

private:
    void OpenSource() override {}
    LineHeader& SourceLine() override { return line_; }
    TraceHeaderDefinition& SourceHeader() override { return header_; }
    TraceSamples& SourceSamples() override { return samples_; }
    ReadResult ReadNext() override {
        if (at_ == traces_.size()) return ReadResult::kEnd;
        if (moved_ && static_cast<int>(at_) == forgotten) return ReadResult::kSkipped;
        const Given& given = traces_[at_];
        image_.assign(kTraceHeaderBytes, std::byte{0});
        header_.attach(image_.data());
        set("TRNUML", static_cast<double>(at_));
        set("AZIMUTH", given.azimuth);
        set("OFFSET", given.offset);
        set("CDPN", given.cdp);
        set("WEIGHT", 3);
        std::minstd_rand random(static_cast<unsigned>(at_) + 1);
        for (std::byte& byte : std::span(raw_).first(16)) byte = static_cast<std::byte>(random());
        const auto bytes = static_cast<std::size_t>(given.stored * bytes_per_sample(given.format));
        samples_.set_raw(std::span(raw_).first(bytes), given.stored, line_.samples(), 17,
                         given.format);
        ++at_;
        return ReadResult::kTrace;
    }
    void set(const char* word, double value) { header_.set_double(header_.find(word), value); }
    std::int64_t SourceTraceCount() override { return std::ssize(traces_); }
    bool CanReposition() const override { return repositions_; }
    bool Reposition(std::int64_t index) override {
        at_ = static_cast<std::size_t>(index);
        return moved_ = true;
    }

    const std::vector<Given> traces_;
    const bool repositions_;
    std::size_t at_ = 0;
    bool moved_ = false;
    std::vector<std::byte> image_, raw_;
    LineHeader line_;
    TraceHeaderDefinition header_;
    TraceSamples samples_;
};

int number_of(TraceHeaderDefinition& header) { return header.get_int(header.find("TRNUML")); }

// Drops every seventh trace and works on every third one.
class Between final : public ProcessFlowItem {
public:
    Between() : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet) {}
    int ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) override {
        const int number = number_of(header);
        if (number % 7 == 6) return kKeepBack;
        if (number % 3 == 0) {
            const std::span<float> trace = samples.floats(header);
            trace[0] = static_cast<float>(number) + .1f;
            samples.set_floats(trace);
        }
        return kPassOn;
    }
};

class End final : public ProcessFlowItem {
public:
    explicit End(bool whole = true)
        : ProcessFlowItem(FlowItemKind::kAgc, LogFlag::kQuiet), whole_(whole) {}
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override {
        numbers.push_back(number_of(header));
        EXPECT_EQ(line.sample_interval(), SampleInterval::of_us(2000));
        if (!whole_) return kPassOn;
        Seen one{.format = samples.format(),
                 .stored = samples.stored_count(),
                 .nominal = samples.nominal_count(),
                 .second_count = samples.second_count()};
        one.header.assign(header.image(), header.image() + kTraceHeaderBytes);
        if (samples.raw_valid()) one.raw.assign(samples.raw().begin(), samples.raw().end());
        for (const float f : samples.floats(header)) {
            one.floats.push_back(std::bit_cast<std::uint32_t>(f));
        }
        seen.push_back(one);
        return kPassOn;
    }
    int FlushAtEnd() override {
        before_flush = numbers.size();
        return 1;
    }
    std::vector<int> numbers;
    std::vector<Seen> seen;
    std::size_t before_flush = 0;

private:
    const bool whole_;
};

class Sort : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(ReadGlobalConfig(root.file("halvern.cfg")), 0); }
    void TearDown() override { RemoveScratchFiles(); }

    static std::unique_ptr<TraceSort> sort_by(std::vector<std::string> lines) {
        return std::make_unique<TraceSort>(section_of(FlowItemKind::kTraceSort, std::move(lines)),
                                           LogFlag::kLog);
    }
    static std::unique_ptr<Stack> stack() {
        return std::make_unique<Stack>(section_of(FlowItemKind::kStack, {"SORTED=1"}),
                                       LogFlag::kQuiet);
    }
    // Runs the items after the source and gives the end of the flow.
    template <class... Items>
    End& run(Source& source, std::unique_ptr<Items>... items) {
        FlowItem* last = &source;
        ((last = &last->SetNext(std::move(items))), ...);
        auto& end = static_cast<End&>(last->SetNext(std::make_unique<End>(whole)));
        ReadPauseFlag = 0;
        source.RunInput();
        return end;
    }
    bool scratch_is_empty() const { return std::filesystem::is_empty(root.file("scratch")); }

    LogCapture messages;
    SystemRoot root;
    bool whole = true;
};

struct Way {
    const char* name;
    const char* buffering;
    bool repositions;
};
class SortWays : public Sort, public testing::WithParamInterface<Way> {};

// Against the traces as they come without a sort, brought in order by the standard library.
TEST_P(SortWays, GivesTheSameTracesInOrder) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr SampleFormat kFormats[] = {SampleFormat::kIeee, SampleFormat::kIbm,
                                         SampleFormat::kInt16, SampleFormat::kSegd8048};
    std::mt19937 random(3);
    std::vector<Given> given;
    for (int i = 0; i < 500; ++i) {
        given.push_back(
            {.azimuth = random() % 9 == 0 ? kNaN : static_cast<double>(random() % 5) - 2.5,
             .offset = static_cast<int>(random() % 10) - 5,
             .format = kFormats[random() % 4],
             .stored = static_cast<int>(random() % 5)});
    }
    Source unsorted(given);
    std::vector<Seen> expected = run(unsorted, std::make_unique<Between>()).seen;
    ASSERT_EQ(expected.size(), 429u);
    const auto key = [](const Seen& one) {
        const double azimuth = get_f32(std::span(one.header).subspan<212, 4>());
        return std::tuple(std::isnan(azimuth), std::isnan(azimuth) ? 0 : azimuth,
                          get_i32(std::span(one.header).subspan<36, 4>()));
    };
    std::ranges::stable_sort(expected, {}, key);
    const bool replays = GetParam().repositions && *GetParam().buffering == '0';
    if (!replays) {
        for (Seen& one : expected) {
            if (one.format == SampleFormat::kSegd8048) one.raw.clear();
        }
    }

    Source source(given, GetParam().repositions);
    const End& end = run(source, std::make_unique<Between>(),
                         sort_by({"BUFFERFILE=" + std::string(GetParam().buffering),
                                  "HEADER1=AZIMUTH", "HEADER2=OFFSET"}));
    EXPECT_EQ(end.seen, expected);
    EXPECT_EQ(end.before_flush, 429u);
    EXPECT_TRUE(scratch_is_empty());

    const std::string text = messages.text();
    EXPECT_THAT(text, HasSubstr("Trace Sort: Sorting 429 traces.\n"));
    EXPECT_THAT(text, HasSubstr("Trace Sort: Writing Sorted Trace #1\nTrace Sort: Writing Sorted "
                                "Trace #2\n"));
    EXPECT_THAT(text, HasSubstr("Writing Sorted Trace #429\n"));
    EXPECT_THAT(text, HasSubstr("Restarting data read.\n"));
    EXPECT_EQ(text.find("*** WARNING in Trace Sort: The traces cannot be read from the input a "
                        "second time.  They are being buffered to a file.\n") != std::string::npos,
              !GetParam().repositions && *GetParam().buffering == '0');
}

INSTANTIATE_TEST_SUITE_P(All, SortWays,
                         testing::Values(Way{"ReadAgain", "0", true},
                                         Way{"CannotBeReadAgain", "0", false},
                                         Way{"Buffer", "1", true}, Way{"FastBuffer", "2", false}),
                         [](const auto& way) { return std::string(way.param.name); });

const std::vector<Given> kSix{{.offset = 3, .cdp = 2}, {.offset = 1, .cdp = 1},
                              {.offset = 2, .cdp = 2}, {.offset = 2, .cdp = 1},
                              {.offset = 9, .cdp = 3}, {.offset = 3, .cdp = 1}};

TEST_F(Sort, TwiceInAFlow) {
    Source source(kSix);
    const End& end = run(source, sort_by({"HEADER1=OFFSET"}), sort_by({"HEADER1=CDPN"}));
    EXPECT_THAT(end.numbers, ElementsAre(1, 3, 5, 2, 0, 4));
    EXPECT_EQ(source.next()->GetReceivedCount(), 12);  // read again for the first sort only
    EXPECT_TRUE(scratch_is_empty());
}

TEST_F(Sort, BeforeAndAfterAStack) {
    Source source(kSix);
    // Stacked they carry the headers of traces 1, 2 and 4, with 3, 2 and 1 traces each.
    const End& end = run(source, sort_by({"HEADER1=CDPN", "HEADER2=OFFSET"}), stack(),
                         sort_by({"BUFFERFILE=0", "HEADER1=FOLD"}));
    EXPECT_THAT(end.numbers, ElementsAre(4, 2, 1));
    EXPECT_EQ(end.before_flush, 3u);
    EXPECT_EQ(source.next()->next()->GetReceivedCount(), 6);
}

TEST_F(Sort, WithoutKeysKeepsTheOrder) {
    Source source(kSix);
    EXPECT_THAT(run(source, sort_by({"HEADER2=NOSUCH"})).numbers, ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(messages.text(),
                HasSubstr("WARNING in Trace Sort: The header 'NOSUCH' is not defined"));
    EXPECT_THAT(messages.text(), Not(HasSubstr("'NONE'")));
}

TEST_F(Sort, WithoutTraces) {
    Source source({});
    EXPECT_TRUE(run(source, sort_by({"BUFFERFILE=1"})).numbers.empty());
    EXPECT_THAT(messages.text(), HasSubstr("Sorting 0 traces.\n"));
}

// One sample in 256 of those that the source makes up is not finite.
TEST_F(Sort, WhatIsReadAgainIsReportedOnce) {
    const auto log_of = [this](auto... sort) {
        LogCapture own;
        {
            Source source(std::vector<Given>(500));
            run(source, std::make_unique<Filter>(FlowSection{}, LogFlag::kQuiet),
                std::make_unique<TimeShift>(FlowSection{.lines = {"AMOUNT=3"}}, LogFlag::kQuiet),
                std::move(sort)...);
        }
        std::istringstream lines(own.text());
        std::string warnings;
        int shifts = 0;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with("*** WARNING")) warnings += line + '\n';
            shifts += line.ends_with("shiftAmount = -3");
        }
        return warnings + std::to_string(shifts) + " shifts";
    };
    const std::string unsorted = log_of();
    EXPECT_THAT(unsorted, HasSubstr("passed on unfiltered = "));
    EXPECT_THAT(unsorted, HasSubstr("shifted by whole samples = "));
    EXPECT_THAT(unsorted, Not(HasSubstr("\n0 shifts")));
    EXPECT_EQ(log_of(sort_by({"HEADER1=TRNUML"})), unsorted);
}

TEST_F(Sort, SaysWhatItWillDo) {
    const auto logged = [](const char* buffering) {
        LogCapture own;
        sort_by({"BUFFERFILE=" + std::string(buffering), "HEADER1=FFID"});
        return own.text();
    };
    EXPECT_THAT(logged("0"),
                HasSubstr("Data will NOT be buffered to a file.\n"
                          "Trace Sort: Header #1 = FFID\nTrace Sort: Header #2 = NONE"));
    EXPECT_THAT(logged("1"), HasSubstr("Data will be buffered to a file.\n"));
    EXPECT_THAT(logged("2"), HasSubstr("Data will be FAST-buffered to a file.\n"));
    EXPECT_THAT(logged("9"), HasSubstr("Data will be FAST-buffered to a file.\n"));
}

// More traces than the fast buffer collects and a reading block holds; then more than either has
// memory for.
TEST_F(Sort, BeyondItsBlocks) {
    whole = false;
    struct Size {
        int traces, samples;
    };
    for (const auto& [traces, samples] : {Size{70000, 4}, Size{700, 32000}}) {
        for (const char* buffering : {"BUFFERFILE=1", "BUFFERFILE=2"}) {
            std::vector<Given> given;
            for (int i = 0; i < traces; ++i) {
                // A permutation: 7919 has no divisor in common with either count.
                given.push_back({.offset = static_cast<int>(std::int64_t{i} * 7919 % traces),
                                 .stored = samples});
            }
            Source source(given, true, samples);
            const End& end = run(source, sort_by({buffering, "HEADER1=OFFSET"}));
            ASSERT_EQ(end.numbers.size(), given.size());
            int wrong = 0;
            for (std::size_t i = 0; i < given.size(); ++i) {
                wrong +=
                    given[static_cast<std::size_t>(end.numbers[i])].offset != static_cast<int>(i);
            }
            EXPECT_EQ(wrong, 0) << traces << " " << buffering;
        }
    }
}

TEST_F(Sort, EndsTheJobOnAFullDisk) {
    for (const char* buffering : {"BUFFERFILE=1", "BUFFERFILE=2"}) {
        const std::vector<Given> given(1000, Given{.stored = 1000});
        Source source(given, true, 1000);
        const std::string text = job_error_log([&] {
            const FileSizeLimit limit(1 << 20);
            run(source, sort_by({buffering}));
        });
        EXPECT_THAT(text, HasSubstr("*** ERROR in Trace Sort: Cannot write the buffer file '" +
                                    root.file("scratch/SCR")));
        EXPECT_THAT(text, HasSubstr("': File too large.\n"));
        EXPECT_TRUE(scratch_is_empty());
    }
    std::filesystem::remove(root.file("scratch"));
    Source source(kSix);
    EXPECT_JOB_ERROR(run(source, sort_by({"BUFFERFILE=1"})), "Cannot create a buffer file.\n");
}

TEST_F(Sort, EndsTheJobWhenTheInputIsNotWhatItWas) {
    Source source(kSix);
    source.forgotten = 4;
    EXPECT_JOB_ERROR(run(source, sort_by({"HEADER1=CDPN"})),
                     "The input did not give the same traces when it was read again.\n");
}

}  // namespace
}  // namespace halvern
