#include "flow/flow_item.h"

#include <algorithm>
#include <csignal>
#include <utility>

namespace halvern {

int ReadPauseFlag = 0;

namespace {
volatile std::sig_atomic_t stop_requested = 0;
}

void RequestJobStop() { stop_requested = 1; }
bool JobStopRequested() { return stop_requested != 0; }

bool FlowItem::EndedByRequest() {
    if (!JobStopRequested()) return false;
    LogPrint("The job was asked to stop.\n");
    TerminateJob(kJobError);
    return true;
}

FlowItem::FlowItem(FlowItemKind kind, LogFlag log) : entry_(flow_item_kind(kind)), log_(log) {
    if (log_.logs()) Message("Initializing Flow Item\n");
}

FlowItem::~FlowItem() {
    DeleteChain();
    Message("Completed Flow Item\n");
}

void FlowItem::Configure(const FlowSection& section) {
    SetDefaults();
    ReadParameters(section);
    if (log_.logs()) LogParameters();
}

void FlowItem::WriteParameters(std::FILE* stream) {
    std::fprintf(stream, "$%s\n", entry_.keyword);
    write_lines(Parameters(), stream);
}

DialogTexts FlowItem::WindowTexts() const {
    const std::string name = GetName();
    return {.title = name + " Parameters",
            .help_title = "",
            .help_page = "",
            .already_up = name + " Interface is already up."};
}

void FlowItem::ShowInterface(void* /*parent*/, int /*a*/, int /*b*/, int* flow_changed) {
    DialogHost* host = CurrentDialogHost();
    if (!host) return;
    DialogTexts texts = WindowTexts();
    if (host->IsUp(*this)) return host->ShowMessage(texts.already_up);
    if (const std::string obstacle = WindowObstacle(); !obstacle.empty()) {
        return host->ShowMessage(obstacle);
    }
    ParameterList fields = Parameters();
    std::erase_if(fields, [](const Parameter& parameter) { return !parameter.field.label; });
    std::stable_sort(fields.begin(), fields.end(), [](const Parameter& a, const Parameter& b) {
        return a.field.position < b.field.position;
    });
    host->Open({.item = this,
                .texts = std::move(texts),
                .fields = std::move(fields),
                .refuse = [this] { return RefuseParameters(); },
                .flow_changed = flow_changed});
}

int FlowItem::GetInputTraceCount() { return previous_ ? previous_->GetInputTraceCount() : 0; }
int FlowItem::GetInputPosition() { return held_in_int(InputTracesRead()); }
std::int64_t FlowItem::InputTracesRead() { return previous_ ? previous_->InputTracesRead() : 0; }
int FlowItem::SetInputPosition(int index) {
    return previous_ ? previous_->SetInputPosition(index) : 0;
}
int FlowItem::SetInputRange(int a, int b) { return previous_ ? previous_->SetInputRange(a, b) : 0; }
const char* FlowItem::GetInputName() { return previous_ ? previous_->GetInputName() : nullptr; }
const char* FlowItem::GetInputHeaderName() {
    return previous_ ? previous_->GetInputHeaderName() : nullptr;
}
bool FlowItem::CanReplayInput() {
    return previous_ && RepeatsItself() && previous_->CanReplayInput();
}
int FlowItem::ReplayInput(std::span<const std::int64_t> positions) {
    if (!previous_) return 0;
    repeating_ = true;
    const int done = previous_->ReplayInput(positions);
    repeating_ = false;
    return done;
}

void FlowItem::ReceiveTrace(LineHeader& line, TraceHeaderDefinition& header,
                            TraceSamples& samples) {
    if (ProcessTrace(line, header, samples) != kPassOn) return;
    SendTrace(replacement_line_ ? *replacement_line_ : line, header,
              replacement_samples_ ? *replacement_samples_ : samples);
}

void FlowItem::PrepareRun(LineHeader&, TraceHeaderDefinition&, TraceSamples&, int) {}
void FlowItem::EndRun() {}
int FlowItem::FlushAtEnd() { return 1; }
int FlowItem::ProcessTrace(LineHeader&, TraceHeaderDefinition&, TraceSamples&) { return kPassOn; }

void FlowItem::SetDefaults() { set_defaults(Parameters()); }

void FlowItem::ReadParameters(const FlowSection& section) {
    const ParameterList list = Parameters();
    for (const std::string& line : section.lines) read_line(list, line.c_str());
}

void FlowItem::LogParameters() {
    for (const Parameter& parameter : Parameters()) {
        if (parameter.log) Message("%s", log_line(parameter).c_str());
    }
}

void FlowItem::LogParameter(std::string_view key) {
    const ParameterList list = Parameters();
    const auto row = std::ranges::find(list, key, &Parameter::key);
    if (row != list.end()) Message("%s", log_line(*row).c_str());
}

void FlowItem::SendTrace(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples) {
    ++sent_;
    if (next_) next_->DeliverTrace(line, header, samples);
}

void FlowItem::DeliverTrace(LineHeader& line, TraceHeaderDefinition& header,
                            TraceSamples& samples) {
    ++received_;
    ReceiveTrace(line, header, samples);
}

void FlowItem::PrepareChain(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                            int input_traces) {
    PrepareRun(line, header, samples, input_traces);
    if (!next_) return;
    next_->PrepareChain(replacement_line_ ? *replacement_line_ : line, header,
                        replacement_samples_ ? *replacement_samples_ : samples, input_traces);
}

int FlowItem::FlushChain() {
    for (FlowItem* item = next_.get(); item; item = item->next_.get()) {
        if (item->FlushAtEnd() == 0) return 0;
    }
    return 1;
}

void FlowItem::EndChain() {
    for (FlowItem* item = next_.get(); item; item = item->next_.get()) item->EndRun();
}

FlowItem& FlowItem::SetNext(std::unique_ptr<FlowItem> item) {
    next_ = std::move(item);
    next_->previous_ = this;
    return *next_;
}

void FlowItem::DeleteChain() {
    FlowItem* last = this;
    while (last->next_) last = last->next_.get();
    while (last != this) {
        last = last->previous_;
        last->next_.reset();
    }
}

void FlowItem::Take(Weight weight, std::string_view text) const {
    if (log_.reporter()) return log_.reporter()->Take(weight, text);
    LogReporter(GetName()).Take(weight, text);
}

}  // namespace halvern
