#include "items/agc.h"

#include <limits>

#include "flow/item_checks.h"
#include "numerics/running_gain.h"

namespace halvern {

Agc::Agc(const FlowSection& section, LogFlag log) : ProcessFlowItem(FlowItemKind::kAgc, log) {
    Configure(section);
}

Agc::Agc(int window_ms, LogFlag log) : ProcessFlowItem(FlowItemKind::kAgc, log) {
    SetDefaults();
    window_ms_ = window_ms;
    if (log.logs()) LogParameters();
}

ParameterList Agc::Parameters() {
    return {
        {.key = "WINDOWSIZE",
         .format = "%d",
         .value = Bound{&window_ms_, 256},
         .log = "Window Size = %d\n",
         .field = {.label = "Window",
                   .prompt = "Window Size (in msec.)?",
                   .help = "Choose the window size for the AGC (Automatic Gain Control).\n"
                           "The AGC that is performed is an Instantaneous AGC.\n"
                           "Common window sizes are between 256 and 1024 milliseconds."}},
    };
}

void Agc::PrepareRun(LineHeader& line, TraceHeaderDefinition&, TraceSamples&, int) {
    constexpr int kLongestMs = std::numeric_limits<int>::max() / SampleInterval::kPerMs;
    if (window_ms_ < 1) {
        Error(
            "The window size parameter must be greater than or equal to 1.  "
            "You have entered '%d'.\n",
            window_ms_);
        return TerminateJob(kJobError);
    }
    if (window_ms_ > kLongestMs) {
        Error("The window size parameter must not be greater than %d.  You have entered '%d'.\n",
              kLongestMs, window_ms_);
        return TerminateJob(kJobError);
    }
    if (!RequireSampleInterval(*this, line)) return;
    int window = static_cast<int>(line.sample_interval().samples_in(window_ms_));
    if (window > line.samples()) {
        Warning(
            "The window size is greater than the trace length.  "
            "It is being reduced to the trace length.\n");
        window = line.samples();
    }
    half_window_ =
        static_cast<std::size_t>(window / 2);  // an odd window works as one of a sample less
    energies_.resize(static_cast<std::size_t>(line.samples()));
}

int Agc::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    // Refused for a trace of another length only, which the line does not have.
    if (!numerics::running_gain(trace, half_window_, energies_)) return kKeepBack;
    samples.set_floats(trace);
    return kPassOn;
}

}  // namespace halvern
