#include "items/trace_sort.h"

#include <algorithm>
#include <new>

namespace halvern {

namespace {
constexpr const char* kNone = "NONE";
// Traces that the fast buffer collects before it writes them.
constexpr int kFastBufferTraces = 10000;
}  // namespace

TraceSort::TraceSort(const FlowSection& section, LogFlag log)
    : BufferingFlowItem(FlowItemKind::kTraceSort, log) {
    Configure(section);
}

ParameterList TraceSort::Parameters() {
    const auto key = [this](std::size_t index, const char* name, const char* log, Field field) {
        field.kind = FieldKind::kHeaderWord;
        return Parameter{.key = name,
                         .format = "%s",
                         .value = Bound{&words_[index], kNone},
                         .log = log,
                         .field = std::move(field)};
    };
    return {
        {.key = "BUFFERFILE",
         .format = "%d",
         .value = Bound{&buffering_, kNoBuffer},
         .field = {.label = "Buffer",
                   .prompt = "Buffer traces to file?",
                   .choices = {{"NO BUFFER", kNoBuffer},
                               {"BUFFER TO FILE", kBuffer},
                               {"FAST-BUFFER TO FILE", kFastBuffer}}}},
        key(0, "HEADER1", "Header #1 = %s\n",
            {.label = "Header1", .prompt = "Sort header word #1?", .help = "The PRIMARY key."}),
        key(1, "HEADER2", "Header #2 = %s\n",
            {.label = "Header2", .prompt = "Sort header word #2?", .help = "The SECONDARY key."}),
        key(2, "HEADER3", "Header #3 = %s\n",
            {.label = "Header3", .prompt = "Sort header word #3?", .help = "The TERTIARY key."}),
        key(3, "HEADER4", "Header #4 = %s\n",
            {.label = "Header4", .prompt = "Sort header word #4?", .help = "The FOURTH key."}),
    };
}

void TraceSort::LogParameters() {
    Message("%s", buffering_ == kNoBuffer ? "Data will NOT be buffered to a file.\n"
                  : buffering_ == kBuffer ? "Data will be buffered to a file.\n"
                                          : "Data will be FAST-buffered to a file.\n");
    BufferingFlowItem::LogParameters();
}

void TraceSort::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                           int input_traces) {
    for (std::size_t i = 0; i < words_.size(); ++i) {
        key_words_[i] = words_[i] == kNone ? -1 : header.find(words_[i]);
        if (key_words_[i] < 0 && words_[i] != kNone) {
            Warning("The header '%s' is not defined; it does not take part in the sort.\n",
                    words_[i].c_str());
        }
    }
    definition_ = &header;
    line_ = line;
    records_.clear();
    try {
        records_.reserve(static_cast<std::size_t>(std::max(input_traces, 0)));
    } catch (const std::bad_alloc&) {  // they may be far fewer: then they find room as they come
    }
    replaying_ = false;
    sent_again_ = 0;
    spooling_ = buffering_ != kNoBuffer;
    if (!spooling_ && !(previous() && previous()->CanReplayInput())) {
        Warning(
            "The traces cannot be read from the input a second time.  They are being buffered to "
            "a file.\n");
        spooling_ = true;
    }
    const bool at_once = buffering_ == kNoBuffer || buffering_ == kBuffer;
    if (spooling_ && !IsRehearsal() && spool_.open(at_once ? 1 : kFastBufferTraces) != 0)
        EndJob(spool_.error());
}

void TraceSort::ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                             TraceSamples& samples) {
    if (replaying_) {
        AnnounceNext();
        return SendTrace(line, header, samples);
    }
    numerics::KeyRecord record{.keys = {},
                               .arrival = static_cast<std::int64_t>(records_.size()),
                               .position = InputTracesRead() - 1};
    for (std::size_t i = 0; i < record.keys.size(); ++i) {
        record.keys[i] = header.get_double(key_words_[i]);
    }
    if (spooling_) {
        TraceSpool::Place place;
        if (spool_.append(header, samples, place) != 0) return EndJob(spool_.error());
        record.arrival = place.offset;
        record.position = place.bytes;
    }
    records_.push_back(record);
}

int TraceSort::FlushAtEnd() {
    Message("Sorting %d traces.\n", static_cast<int>(records_.size()));
    numerics::sort_records(records_);
    if (records_.empty()) return 1;
    Message("Restarting data read.\n");
    if (spooling_) {
        SendFromSpool();
    } else {
        SendFromInput();
    }
    return 1;
}

void TraceSort::SendFromInput() {
    replaying_ = true;
    constexpr std::size_t kBlock = 4096;
    std::vector<std::int64_t> positions;
    positions.reserve(kBlock);
    for (std::size_t done = 0; done < records_.size(); done += positions.size()) {
        positions.clear();
        for (std::size_t i = done; i < std::min(done + kBlock, records_.size()); ++i) {
            positions.push_back(records_[i].position);
        }
        const auto expected = static_cast<int>(done + positions.size());
        if (ReplayInput(positions) != 1 || sent_again_ != expected) {
            return EndJob("The input did not give the same traces when it was read again");
        }
    }
    replaying_ = false;
}

void TraceSort::SendFromSpool() {
    if (spool_.finish_writing() != 0) return EndJob(spool_.error());
    std::byte* const attached = definition_->image();
    std::vector<TraceSpool::Place> places;
    std::size_t loaded = 0;
    for (std::size_t done = 0; done < records_.size(); done += loaded) {
        places.clear();
        const std::size_t end = std::min(done + TraceSpool::kBlockTraces, records_.size());
        for (std::size_t i = done; i < end; ++i) {
            places.push_back({.offset = records_[i].arrival, .bytes = records_[i].position});
        }
        if (spool_.load(places, loaded) != 0) return EndJob(spool_.error());
        for (std::size_t i = 0; i < loaded; ++i) {
            spool_.take_up(i, *definition_, samples_);
            AnnounceNext();
            SendTrace(line_, *definition_, samples_);
            if (EndedByRequest()) return;
        }
    }
    definition_->attach(attached);
}

// What Message would print, but in one write: there is a line for every trace.
void TraceSort::AnnounceNext() {
    LogPrint("%s: Writing Sorted Trace #%d\n", GetName(), ++sent_again_);
}

void TraceSort::EndJob(const std::string& why) {
    Error("%s.\n", why.c_str());
    TerminateJob(kJobError);
}

void TraceSort::EndRun() {
    records_ = {};
    samples_ = {};
    spool_.close();
    definition_ = nullptr;
}

}  // namespace halvern
