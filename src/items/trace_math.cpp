#include "items/trace_math.h"

namespace halvern {

TraceMath::TraceMath(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kTraceMath, log) {
    Configure(section);
}

ParameterList TraceMath::Parameters() {
    return {
        {.key = "SAMPLEVALADDED",
         .format = "%f",
         .value = Bound{&added_, 0},
         .log = "Value to add  = %f\n",
         .field = {.label = "sValAdd",
                   .prompt = "Value Added to Each Trace Sample?",
                   .help = "Enter the value you want to add to each trace sample.\n"
                           " Note: Use - sign to substract a value."}},
        {.key = "REVERSEON",
         .format = "%d",
         .value = Bound{&reverse_, 0},
         .field = {.label = "Reverse",
                   .prompt = "Reverse Trace?",
                   .help = "YES: reverse each trace.\n No: no reverse.",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
    };
}

void TraceMath::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("Reverse Trace = %s\n", reverse_ == 1 ? "YES" : "NO");
}

int TraceMath::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    const float sign = reverse_ == 1 ? -1.0f : 1.0f;
    for (float& sample : trace) sample = sign * (sample + added_);
    if (!IsRepeating()) shortened_.look(samples, trace);
    samples.set_floats(trace);
    return kPassOn;
}

}  // namespace halvern
