#include "items/stack.h"

#include <algorithm>

#include "flow/item_checks.h"

namespace halvern {

namespace {
// The question's answer that it names is the opposite of the one it asks for; its readers know it.
constexpr const char* kNotSorted =
    "You must add a 'Trace Sort' process before the Stack and change the sort question to "
    "'Not Sorted'.";
}  // namespace

Stack::Stack(const FlowSection& section, LogFlag log)
    : BufferingFlowItem(FlowItemKind::kStack, log) {
    Configure(section);
}

ParameterList Stack::Parameters() {
    return {
        {.key = "STACKHEADER",
         .format = "%s",
         .value = Bound{&word_, "CDPN"},
         .log = "Stack Header Word = %s\n",
         .field = {.label = "Header",
                   .prompt = "Stack header word?",
                   .help = "This is the header word for stacking.  A common key is CDPN.\n\n"
                           "The traces should be sorted by this word before input to the stack.  "
                           "If not, the stack will not function correctly.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "SORTED",
         .format = "%d",
         .value = Bound{&sorted_, 0},
         .field = {.label = "Sort",
                   .prompt = "Has the data been sorted by the selected header?",
                   .help = "If the data is sorted by the header word selected in the 'Stack header "
                           "word?' question, select 'Sorted'.  Otherwise, select 'Not Sorted'.\n\n"
                           "If the data has not been sorted by this trace header word, you must "
                           "add a Trace Sort in the flow before the Stack process.",
                   .choices = {{"Sorted", 1}, {"Not Sorted", 0}}}},
    };
}

std::string Stack::RefuseParameters() { return sorted_ == 0 ? kNotSorted : ""; }

void Stack::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (sorted_ == 0) {
        Error("%s\n", kNotSorted);
        return TerminateJob(kJobError);
    }
    if ((key_word_ = RequireHeaderWord(*this, header, word_.c_str())) < 0 ||
        (fold_word_ = RequireHeaderWord(*this, header, "FOLD")) < 0) {
        return;
    }
    Message(
        "\nThe following SEG-Y trace headers are used on OUTPUT and will reflect the STACKING "
        "values after the STACK PROCESS:\n");
    Message("  FOLD     - Total number of traces stacked into the current trace\n");
    definition_ = &header;
    line_ = line;
    const auto samples = static_cast<std::size_t>(std::max(line.samples(), 0));
    sums_.assign(samples, 0.0f);
    live_.assign(samples, 0);
    stacked_.set_floats(std::vector<float>(samples));
    traces_ = 0;
}

void Stack::ReceiveTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const double key = header.get_double(key_word_);
    if (traces_ > 0 && key != key_) SendGroup();
    if (traces_ == 0) {
        std::ranges::fill(sums_, 0.0f);
        std::ranges::fill(live_, 0);
        std::copy_n(header.image(), kTraceHeaderBytes, image_.begin());
    }
    const std::span<const float> trace = samples.floats(header);
    const std::size_t count = std::min(trace.size(), sums_.size());
    for (std::size_t i = 0; i < count; ++i) {
        sums_[i] += trace[i];
        live_[i] += trace[i] != 0;
    }
    key_ = key;
    ++traces_;
}

void Stack::SendGroup() {
    std::byte* const attached = definition_->image();
    definition_->attach(image_.data());
    definition_->set_double(fold_word_, traces_);
    for (std::size_t i = 0; i < sums_.size(); ++i) {
        if (live_[i] > 0) sums_[i] /= static_cast<float>(live_[i]);
    }
    traces_ = 0;
    stacked_.set_floats(std::span(sums_));
    SendTrace(line_, *definition_, stacked_);
    definition_->attach(attached);
}

int Stack::FlushAtEnd() {
    if (traces_ > 0) SendGroup();
    return 1;
}

void Stack::EndRun() {
    sums_ = {};
    live_ = {};
    stacked_ = {};
    definition_ = nullptr;
}

}  // namespace halvern
