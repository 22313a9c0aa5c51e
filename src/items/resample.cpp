#include "items/resample.h"

#include <cmath>

#include "flow/item_checks.h"

namespace halvern {

Resample::Resample(const FlowSection& section, LogFlag log)
    : ReshapingFlowItem(FlowItemKind::kResample, log) {
    Configure(section);
}

ParameterList Resample::Parameters() {
    return {
        {.key = "INTERVAL",
         .format = "%f",
         .value = Bound{&interval_ms_, 4.0},
         .log = "New sample interval = %f\n",
         .field = {.label = "Interval",
                   .prompt = "New sample interval (in msec.)?",
                   .help = "Fractions are allowed: 0.5 is half a millisecond."}},
        {.key = "ANTIALIAS",
         .format = "%d",
         .value = Bound{&antialias_, 1},
         .field = {.label = "AntiAlias",
                   .prompt = "Filter before a coarser interval?",
                   .help = "YES: a zero-phase filter takes away the frequencies that the new "
                           "interval cannot hold.\n"
                           "NO : they turn up as lower ones.  For data that are known to have "
                           "none.",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "CORNER",
         .format = "%f",
         .value = Bound{&corner_, 0.8},
         .field = {.label = "Corner",
                   .prompt = "Corner of that filter (share of the new Nyquist frequency)?",
                   .help = "Up to here frequencies pass; from here to the Nyquist frequency they "
                           "fall off.",
                   .applies = [this] { return antialias_ != 0; }}},
    };
}

void Resample::LogParameters() {
    ProcessFlowItem::LogParameters();
    if (antialias_ == 0) return Message("No anti-alias filter.\n");
    Message("Anti-alias corner = %f of the Nyquist frequency\n", corner_);
}

void Resample::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (!RequireSampleInterval(*this, line)) return;
    constexpr double kLongestMs = 65.535;
    if (!(interval_ms_ > 0) || interval_ms_ > kLongestMs) {
        Error(
            "The new sample interval must be above 0 and at most %.3f ms.  "
            "You have entered '%f'.\n",
            kLongestMs, interval_ms_);
        return TerminateJob(kJobError);
    }
    if (!(corner_ > 0) || corner_ > numerics::Resampler::kLargestCorner) {
        Error("The corner must be above 0 and at most %.2f.  You have entered '%f'.\n",
              numerics::Resampler::kLargestCorner, corner_);
        return TerminateJob(kJobError);
    }
    old_ = line.sample_interval();
    new_ = SampleInterval(static_cast<int>(std::lround(interval_ms_ * SampleInterval::kPerMs)));
    resampler_.reset();
    if (new_ == old_)
        return Message("The traces have this interval already: they pass as they are.\n");
    const numerics::Resampler::Change change{.samples = line.samples(),
                                             .old_interval = old_.internal(),
                                             .new_interval = new_.internal(),
                                             .antialias = antialias_ != 0,
                                             .corner = corner_};
    if (line.samples() < 1 || !new_) {
        Error("The traces have no samples.\n");
        return TerminateJob(kJobError);
    }
    if (!Reshape(line, header, numerics::Resampler::samples_after(change), new_)) return;
    resampler_ = numerics::Resampler::make(change);
    if (!resampler_) {
        Error("The operator from %.3f ms to %.3f ms would be too long.\n", old_.ms(), new_.ms());
        return TerminateJob(kJobError);
    }
    Message("Samples = %lld\n", static_cast<long long>(resampler_->outputs()));
}

int Resample::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    if (!resampler_) return kPassOn;
    resampler_->resample(samples.floats(header), NewSamples(header));
    // Whole old intervals, counted in new ones.
    const auto in_new = [this](std::int64_t intervals) {
        return intervals * old_.internal() / new_.internal();
    };
    const std::int64_t stored = samples.stored_count();
    FinishTrace(header, {.stored = stored > 0 ? in_new(stored - 1) + 1 : 0,
                         .start = in_new(StartSample(header))});
    return kPassOn;
}

void Resample::EndRun() {
    resampler_.reset();
    ReshapingFlowItem::EndRun();
}

}  // namespace halvern
